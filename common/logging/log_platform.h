// The few facts of the operating system that the logger asks for beyond the file wrappers.
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>

#include <zlib.h>

namespace logging::platform {

// Local time of a moment; false when the moment cannot be converted.
bool local_time(std::time_t moment, std::tm& result);

// The Win32 error code of the last failed C runtime or system call of this thread.
std::uint32_t last_error_code();

// A log path as the logger carries it, narrow, and its wide form for the file wrappers. Text is
// UTF-8 in the narrow form; where the system names files by bytes, bytes that are not UTF-8 stay
// as they are, so that a path given on the command line names the file it named there.
std::string narrow_log_path(const std::wstring& path);
std::wstring wide_log_path(const std::string& path);

// The file system's own form of a log path (narrow, UTF-8); throws when the path cannot be found.
std::filesystem::path native_path(const std::string& path);

// gzopen on a log path; null with the system's error set on failure.
gzFile open_gz(const std::string& path, const char* mode);

} // namespace logging::platform

#include "common/logging/log_platform.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "compat/win_types.h"

namespace logging::platform {

bool local_time(std::time_t moment, std::tm& result) {
    return ::localtime_s(&result, &moment) == 0;
}

std::uint32_t last_error_code() {
    return ::GetLastError();
}

std::string narrow_log_path(const std::wstring& path) {
    return to_ansi(path);
}

std::wstring wide_log_path(const std::string& path) {
    return from_utf8(path);
}

std::filesystem::path native_path(const std::string& path) {
    return std::filesystem::path(from_utf8(path));
}

gzFile open_gz(const std::string& path, const char* mode) {
    return ::gzopen_w(from_utf8(path).c_str(), mode);
}

} // namespace logging::platform

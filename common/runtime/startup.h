// The start of the common library: the first thing the process does.
#pragma once

#include <string>
#include <vector>

namespace runtime {

// Decides the log file from the process command line ("-log <path>", else the log directory and
// default_log_name), opens the log and writes the start banner. Returns the log path, narrowed.
std::string start_common_library(const std::string& default_log_name);

// The same on a given command line (program name first).
std::string start_common_library(const std::string& default_log_name,
                                 const std::vector<std::wstring>& arguments);

// The log path that start-up takes from a command line, without opening anything.
std::wstring log_path_from_arguments(const std::wstring& default_log_name,
                                     const std::vector<std::wstring>& arguments);

// Whether "-verbose" was on the command line. Accepted and kept; nothing reads it in this tool.
bool verbose_requested();

} // namespace runtime

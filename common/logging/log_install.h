// Pointing the process's log at its file.
#pragma once

#include <string>

namespace logging {

// Announces the log on standard output, opens it and installs it with the size check on. When the
// file cannot be set up it says so on standard output and the process goes on without a log.
bool install_log(const std::string& path);

// The same without the announcements, for tests: throws when the file cannot be set up, and returns
// the path of the file that was taken.
std::string install_log_file(const std::string& path);

} // namespace logging

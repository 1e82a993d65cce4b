// Opening the log file of the process: its folder, a name that no other writer holds, an early rotation.
#pragma once

#include <memory>
#include <string>

namespace logging::receiver {

class log_file_t;

constexpr int numbered_names_tried = 1000;

// path: narrow, UTF-8. The receiver's path() tells which file it became.
std::shared_ptr<log_file_t> prepare_log(const std::string& path);

} // namespace logging::receiver

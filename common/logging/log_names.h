// Names around a log file: its archives by age, the numbered names of a locked log, its folder.
#pragma once

#include <string>

namespace logging::receiver {

// Age 0 is the path itself; Mirrack.log.gz at age 2 with extension "gz" is Mirrack.log.2.gz.
std::string aged_name(const std::string& path, const std::string& extension, int age);

// The n-th name tried for a log that is locked: Mirrack.log gives Mirrack.1.log, trace gives trace.1.log.
std::string numbered_log_name(const std::string& path, int n);

// Folder part and file name, split at the last backslash or slash.
std::string folder_of(const std::string& path);
std::string file_name_of(const std::string& path);

// Does the path lie under the folder? Components compared one by one, without regard to case.
bool lies_under_folder(const std::string& path, const std::string& folder);

} // namespace logging::receiver

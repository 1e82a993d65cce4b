// mirrack-lab state: what a host holds now, as a readable table: live shadow copies,
// prepared CSV files, and the component results of the last backups.
#pragma once

#include <filesystem>
#include <string>

namespace lab {

std::string host_state_report(const std::filesystem::path& host_dir, unsigned last_backups = 5);

} // namespace lab

// The backup specifications (HVBackupSpec) that go with a sample host: one for an on-host
// backup of every VM, one for an off-host backup of the VMs a transportable provider serves.
#pragma once

#include "lab/sample_vms.h"

#include <filesystem>
#include <vector>

namespace lab {

void write_backup_spec(const std::filesystem::path& file, const std::vector<sample_vm_t>& vms, bool offhost);

} // namespace lab

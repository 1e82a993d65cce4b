// What the VSS layer's tests share: the lines of a failure, the log written meanwhile, a backup
// object on the scratch host, and the calls the host saw.
#pragma once

#include "common/format/format.h"
#include "scratch_host.h"
#include "tests/support/failure_capture.h"
#include "vssutils/com.h"

#include <string>
#include <vector>

namespace vssutils_test {

using test_support::failure_lines;
using test_support::log_capture_t;

// How often the host saw op (optionally with argument among its arguments).
std::size_t journal_count(const hostsim_test::scratch_host_t& host, const std::string& op,
                          const std::string& argument = "");

// Created and initialised for a backup.
VSSUtils::BackupComponentsPtr initialised_backup();
// Also with the writers' metadata gathered.
VSSUtils::BackupComponentsPtr gathered_backup();

} // namespace vssutils_test

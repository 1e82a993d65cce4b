// What the snapshot task's unit tests share: the log written meanwhile, the lines
// of a failure, and a snapshot taken on the test's own thread.
#pragma once

#include "hyperv_test_host.h"
#include "snapshot/vss_snapshot.h"
#include "tests/support/failure_capture.h"

#include <memory>
#include <string>
#include <vector>

class CHvBackupSpec;

namespace snapshot_test {

using test_support::failure_lines;
using test_support::log_capture_t;

std::shared_ptr<CHvBackupSpec> parse_spec(const std::string& text);
std::unique_ptr<impl::CVssSnapshot> take_snapshot(const std::string& spec);

// The items of a VM in a snapshot's result, or an empty list.
ItemsList items_of(const CVssSnapshotResult& result, const std::string& vmId);

} // namespace snapshot_test

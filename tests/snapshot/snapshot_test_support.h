// What the snapshot task's unit tests share: the log written meanwhile, the lines
// of a failure, a snapshot taken on the test's own thread, and a task's verdict awaited.
#pragma once

#include "common/exc/convert.h"
#include "common/win/event.h"
#include "hyperv_test_host.h"
#include "snapshot/operation_info.h"
#include "snapshot/vss_snapshot.h"
#include "spec/hv_backup_spec.h"
#include "tests/support/failure_capture.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace snapshot_test {

using test_support::failure_lines;
using test_support::log_capture_t;

inline void wait_for(const std::function<bool()>& condition) {
    while (!condition())
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

// The status of a task's operation once it has completed.
template <class Task> impl::SOperationStatus wait_for_verdict(Task& task) {
    wait_for([&] { return task.GetOperationInfo()->IsCompleted(); });
    return task.GetOperationInfo()->Read();
}

inline std::shared_ptr<CHvBackupSpec> parse_spec(const std::string& text) {
    return std::make_shared<CHvBackupSpec>(text);
}

inline std::unique_ptr<impl::CVssSnapshot> take_snapshot(const std::string& spec) {
    test_support::install_test_log();
    return std::make_unique<impl::CVssSnapshot>(parse_spec(spec),
                                                std::make_shared<win::win_manual_reset_event_t>());
}

// The items of a VM in a snapshot's result, or an empty list.
inline ItemsList items_of(const CVssSnapshotResult& result, const std::string& vmId) {
    auto vm = result.vmFiles.find(string_to_guid(vmId));
    return vm == result.vmFiles.end() ? ItemsList() : vm->second;
}

} // namespace snapshot_test

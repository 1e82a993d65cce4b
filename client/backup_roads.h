// The two roads of a backup server through a snapshot, from the first command to the
// close: on the host alone, and off-host with a proxy that imports the snapshot. What is
// done with the items on the way is the caller's (a copy, or a check that reads samples).
#pragma once

#include "client/vm_backup_steps.h"

#include <iosfwd>
#include <vector>

namespace client {

// Snapshot, each VM's items, the work, a verdict per VM, close and disconnect. A failure
// frame or a failed task throws server_failure_exc_t; the task is closed all the same.
std::vector<vm_summary_row_t> RunOnHostRoad(CInvokeClient& host, const backup_job_t& job,
                                            const std::vector<spec_vm_t>& vms, const vm_items_work_t& work,
                                            std::ostream& out);

// The host makes a transportable snapshot, the proxy imports it and converts each VM's
// items to its shadow copies, on which the work is done; the verdicts go to the host.
// Both tasks are closed, the proxy's first. A specification that makes no transportable
// snapshot throws server_failure_exc_t before the proxy is asked anything.
std::vector<vm_summary_row_t> RunOffhostRoad(CInvokeClient& host, CInvokeClient& proxy,
                                             const backup_job_t& job, const std::vector<spec_vm_t>& vms,
                                             const vm_items_work_t& work, std::ostream& out);

} // namespace client

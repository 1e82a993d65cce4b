// The steps that the roads of mirrack-client share: the wait line, each VM's items
// planned, the work on them, the reports to the host and the exit status of the road.
#pragma once

#include "client/backup_arguments.h"
#include "client/backup_summary.h"
#include "client/snapshot_road.h"
#include "client/spec_file_vms.h"
#include "client/vm_item_copy.h"

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace client {

// Throws usage_error_t for a --fail-vm that names no VM of the specification.
void CheckFailedVmsAreInSpec(const backup_arguments_t& arguments, const std::vector<spec_vm_t>& vms);

// On a terminal one line, redrawn at each poll; elsewhere only the outcome. activity
// is what the running task does ("Creating the snapshot"), task what ends ("Snapshot task").
status_observer_t WaitLineOn(std::ostream& out, const std::string& activity, const std::string& task);

// Where a VM's items come from; a server_failure_exc_t makes that VM a failed one.
using vm_items_source_t = std::function<ItemsList(const spec_vm_t& vm)>;

// Each VM's items, planned for the copy, with a line per VM on out. A VM whose items
// can't be had is a failed VM, not a failed backup.
std::vector<vm_copy_t> ListVmItems(const vm_items_source_t& itemsOf, const std::vector<spec_vm_t>& vms,
                                   const std::filesystem::path& dir, std::ostream& out);

// Whether a VM is reported backed up to the host task, and the summary's word for it.
struct vm_verdict_t {
    bool succeeded = false;
    std::string status;
};

// What a road does with the items on the shadow copies once they are listed: a backup
// copies them, a check reads samples of them. Each VM then gets its verdict.
struct vm_items_work_t {
    std::string heading;       // the line before the work
    std::filesystem::path dir; // where the items are planned to go
    std::function<void(std::vector<vm_copy_t>& vms, std::ostream& out)> run;
    std::function<vm_verdict_t(const spec_vm_t& vm, const vm_copy_t& copy)> verdict;
};

// Copies into --to; a VM is backed up when all of it was copied and no --fail-vm names it.
vm_items_work_t BackupWork(const backup_arguments_t& arguments);

// Lists each VM's items, does the work on them and reports every VM to the host task;
// the summary's rows.
std::vector<vm_summary_row_t> WorkAndReportVms(CInvokeClient& host, const vm_items_source_t& itemsOf,
                                               const std::vector<spec_vm_t>& vms, const vm_items_work_t& work,
                                               std::ostream& out);

// exit_success when no VM has a failure noted, else exit_error_response.
int RowsExitStatus(const std::vector<vm_summary_row_t>& rows);

} // namespace client

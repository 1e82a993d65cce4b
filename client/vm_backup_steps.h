// The steps that the on-host and the off-host backups of mirrack-client share: the
// wait line, each VM's items planned for the copy, the reports to the host and the
// exit status of the road.
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

// Reports every VM to the host task and returns the summary's rows.
std::vector<vm_summary_row_t> ReportVms(CInvokeClient& connection, const backup_arguments_t& arguments,
                                        const std::vector<spec_vm_t>& vms,
                                        const std::vector<vm_copy_t>& copies);

// exit_success when every VM was copied whole, else exit_error_response.
int CopiesExitStatus(const std::vector<vm_copy_t>& copies);

} // namespace client

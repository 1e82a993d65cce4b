#include "client/backup_command.h"

#include "client/backup_arguments.h"
#include "client/backup_summary.h"
#include "client/snapshot_road.h"
#include "client/spec_file_vms.h"
#include "client/terminal.h"
#include "client/vm_item_copy.h"
#include "common/format/format.h"

#include <chrono>
#include <cstdio>
#include <ostream>

namespace client {

namespace {

void check_failed_vms_are_in_spec(const backup_arguments_t& arguments, const std::vector<spec_vm_t>& vms) {
    for (const GUID& failed : arguments.failVms) {
        bool found = false;
        for (const spec_vm_t& vm : vms)
            found = found || vm.guid == failed;
        if (!found)
            throw usage_error_t{"--fail-vm " + to_ansi_nothrow(guid_to_wstring(failed)) +
                                " names no VM of the backup specification."};
    }
}

// On a terminal one line, redrawn at each poll; elsewhere only the outcome.
status_observer_t wait_line_on(std::ostream& out) {
    const auto start = std::chrono::steady_clock::now();
    const bool inPlace = IsTerminal(out);
    return [&out, start, inPlace](const operation_status_t& status, unsigned polls) {
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        char line[128];
        if (!status.isCompleted && !inPlace)
            return;
        if (!status.isCompleted)
            std::snprintf(line, sizeof line, "\rCreating the snapshot: poll %u, %.1f s", polls, seconds);
        else
            std::snprintf(line, sizeof line, "%sSnapshot task %s after %u poll%s (%.1f s).\n",
                          inPlace ? "\r" : "", status.isSucceeded ? "completed" : "failed", polls,
                          polls == 1 ? "" : "s", seconds);
        out << line << std::flush;
    };
}

// Each VM's items, planned for the copy. A VM the server can't list is a failed VM, not a failed backup.
std::vector<vm_copy_t> list_vm_items(CInvokeClient& connection, const std::vector<spec_vm_t>& vms,
                                     const std::filesystem::path& dir, std::ostream& out) {
    std::vector<vm_copy_t> copies;
    for (const spec_vm_t& vm : vms) {
        try {
            const ItemsList items = GetVmItems(connection, vm.guid);
            copies.push_back(PlanVmCopy(vm.id, items, dir));
            out << "  " << to_ansi_nothrow(vm.id) << ": " << items.size() << " files\n";
        } catch (const server_failure_exc_t& e) {
            copies.push_back({vm.id, {}, 0, 0, {e.what()}});
            out << "  " << to_ansi_nothrow(vm.id) << ": no list\n";
        }
    }
    return copies;
}

std::string status_text(bool failedOnRequest, const vm_copy_t& copy) {
    if (failedOnRequest)
        return "reported failed (--fail-vm)";
    return copy.Complete() ? "reported OK" : "reported failed (copy incomplete)";
}

// Reports every VM and returns the summary's rows.
std::vector<vm_summary_row_t> report_vms(CInvokeClient& connection, const backup_arguments_t& arguments,
                                         const std::vector<spec_vm_t>& vms,
                                         const std::vector<vm_copy_t>& copies) {
    std::vector<vm_summary_row_t> rows;
    for (std::size_t i = 0; i < vms.size(); ++i) {
        const bool failedOnRequest = IsListed(arguments.failVms, vms[i].guid);
        ReportVmStatus(connection, vms[i].guid, !failedOnRequest && copies[i].Complete());
        rows.push_back({vms[i].id, copies[i].filesCopied, copies[i].bytesCopied,
                        status_text(failedOnRequest, copies[i]), copies[i].failures});
    }
    return rows;
}

int run_road(CInvokeClient& connection, const backup_arguments_t& arguments, const std::string& document,
             const std::vector<spec_vm_t>& vms, std::ostream& out) {
    const GUID snapshotId = BeginSnapshot(connection, {arguments.jobName, arguments.backupConsole, document});
    out << "Snapshot task " << to_ansi_nothrow(guid_to_wstring(snapshotId)) << " started.\n";
    CSnapshotCloser closer(connection);
    WaitForCompletion(connection, wait_line_on(out));
    GetSnapshotDocuments(connection);

    out << "Files of the VMs:\n";
    std::vector<vm_copy_t> copies = list_vm_items(connection, vms, arguments.targetDir, out);
    out << "Copying into " << arguments.targetDir.string() << ":\n";
    CopyVmItems(copies, out);

    const std::vector<vm_summary_row_t> rows = report_vms(connection, arguments, vms, copies);
    closer.Close();
    connection.Disconnect();
    out << "Snapshot closed.\n\n";
    PrintBackupSummary(rows, out);

    for (const vm_copy_t& copy : copies) {
        if (!copy.Complete())
            return exit_error_response;
    }
    return exit_success;
}

} // namespace

int RunBackupCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                     std::ostream& out) {
    const backup_arguments_t parsed = ParseBackupArguments(arguments);
    const std::string document = ReadSpecDocument(parsed.specFile);
    const std::vector<spec_vm_t> vms = SpecVms(document);
    check_failed_vms_are_in_spec(parsed, vms);

    out << "Backup of " << vms.size() << " VM(s) of " << parsed.specFile.string() << " through the pipe "
        << to_ansi_nothrow(options.pipeName) << ".\n";
    const auto connection = CInvokeClient::Connect(options.pipeName, options.connectTimeoutMs);
    try {
        return run_road(*connection, parsed, document, vms, out);
    } catch (const server_failure_exc_t& e) {
        out << "\nBackup failed. " << e.what() << '\n';
        return exit_error_response;
    }
}

} // namespace client

#include "client/backup_command.h"

#include "client/vm_backup_steps.h"
#include "common/format/format.h"

#include <ostream>

namespace client {

namespace {

int run_road(CInvokeClient& connection, const backup_arguments_t& arguments, const std::string& document,
             const std::vector<spec_vm_t>& vms, std::ostream& out) {
    const GUID snapshotId = BeginSnapshot(connection, {arguments.jobName, arguments.backupConsole, document});
    out << "Snapshot task " << to_ansi_nothrow(guid_to_wstring(snapshotId)) << " started.\n";
    CSnapshotCloser closer(connection);
    WaitForCompletion(connection, WaitLineOn(out, "Creating the snapshot", "Snapshot task"));
    GetSnapshotDocuments(connection);

    out << "Files of the VMs:\n";
    const vm_items_source_t itemsOnHost = [&](const spec_vm_t& vm) {
        return GetVmItems(connection, vm.guid);
    };
    std::vector<vm_copy_t> copies = ListVmItems(itemsOnHost, vms, arguments.targetDir, out);
    out << "Copying into " << arguments.targetDir.string() << ":\n";
    CopyVmItems(copies, out);

    const std::vector<vm_summary_row_t> rows = ReportVms(connection, arguments, vms, copies);
    closer.Close();
    connection.Disconnect();
    out << "Snapshot closed.\n\n";
    PrintBackupSummary(rows, out);
    return CopiesExitStatus(copies);
}

} // namespace

int RunBackupCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                     std::ostream& out) {
    const backup_arguments_t parsed = ParseBackupArguments(arguments);
    const std::string document = ReadSpecDocument(parsed.specFile);
    const std::vector<spec_vm_t> vms = SpecVms(document);
    CheckFailedVmsAreInSpec(parsed, vms);

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

#include "client/backup_command.h"

#include "client/backup_roads.h"
#include "common/format/format.h"

#include <ostream>

namespace client {

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
        const std::vector<vm_summary_row_t> rows = RunOnHostRoad(
            *connection, {parsed.jobName, parsed.backupConsole, document}, vms, BackupWork(parsed), out);
        PrintBackupSummary(rows, out);
        return RowsExitStatus(rows);
    } catch (const server_failure_exc_t& e) {
        out << "\nBackup failed. " << e.what() << '\n';
        return exit_error_response;
    }
}

} // namespace client

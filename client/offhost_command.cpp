#include "client/offhost_command.h"

#include "client/backup_roads.h"
#include "client/offhost_arguments.h"
#include "common/format/format.h"

#include <ostream>

namespace client {

int RunOffhostCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                      std::ostream& out) {
    const offhost_arguments_t parsed = ParseOffhostArguments(arguments);
    const std::string document = ReadSpecDocument(parsed.backup.specFile);
    const std::vector<spec_vm_t> vms = SpecVms(document);
    CheckFailedVmsAreInSpec(parsed.backup, vms);

    out << "Off-host backup of " << vms.size() << " VM(s) of " << parsed.backup.specFile.string()
        << ": snapshot through the pipe " << to_ansi_nothrow(parsed.hostPipe) << ", import through the pipe "
        << to_ansi_nothrow(parsed.proxyPipe) << ".\n";
    const auto host = CInvokeClient::Connect(parsed.hostPipe, options.connectTimeoutMs);
    const auto proxy = CInvokeClient::Connect(parsed.proxyPipe, options.connectTimeoutMs);
    try {
        const backup_job_t job{parsed.backup.jobName, parsed.backup.backupConsole, document};
        const std::vector<vm_summary_row_t> rows =
            RunOffhostRoad(*host, *proxy, job, vms, BackupWork(parsed.backup), out);
        PrintBackupSummary(rows, out);
        return RowsExitStatus(rows);
    } catch (const server_failure_exc_t& e) {
        out << "\nOff-host backup failed. " << e.what() << '\n';
        return exit_error_response;
    }
}

} // namespace client

#include "client/offhost_command.h"

#include "client/offhost_arguments.h"
#include "client/offhost_road.h"
#include "client/vm_backup_steps.h"
#include "common/format/format.h"

#include <ostream>

namespace client {

namespace {

struct offhost_connections_t {
    CInvokeClient& host;
    CInvokeClient& proxy;
};

// The host task's documents once its transportable snapshot stands.
snapshot_documents_t SnapshotOnHost(CInvokeClient& host, const backup_job_t& job, std::ostream& out) {
    const GUID snapshotId = BeginSnapshot(host, job);
    out << "Snapshot task " << to_ansi_nothrow(guid_to_wstring(snapshotId)) << " started on the host.\n";
    WaitForCompletion(host, WaitLineOn(out, "Creating the snapshot", "Snapshot task"));
    return GetSnapshotDocuments(host);
}

void ImportOnProxy(CInvokeClient& proxy, const snapshot_documents_t& documents, const backup_job_t& job,
                   std::ostream& out) {
    const GUID importId = BeginSnapshotImport(proxy, documents, job);
    out << "Import task " << to_ansi_nothrow(guid_to_wstring(importId)) << " started on the proxy.\n";
    WaitForCompletion(proxy, WaitLineOn(out, "Importing the snapshot", "Import task"));
}

int run_road(offhost_connections_t tools, const backup_arguments_t& arguments, const std::string& document,
             const std::vector<spec_vm_t>& vms, std::ostream& out) {
    const backup_job_t job{arguments.jobName, arguments.backupConsole, document};
    CSnapshotCloser hostCloser(tools.host);
    const snapshot_documents_t documents = SnapshotOnHost(tools.host, job, out);
    if (documents.snapshotsXml.empty()) {
        out << "The host made no transportable snapshot: the specification doesn't ask for an off-host "
               "backup.\n";
        return exit_error_response;
    }
    CSnapshotCloser proxyCloser(tools.proxy);
    ImportOnProxy(tools.proxy, documents, job, out);

    out << "Files of the VMs, on the proxy's shadow copies:\n";
    const vm_items_source_t itemsOnProxy = [&](const spec_vm_t& vm) {
        return ConvertOffhostPaths(tools.proxy, GetVmItems(tools.host, vm.guid));
    };
    std::vector<vm_copy_t> copies = ListVmItems(itemsOnProxy, vms, arguments.targetDir, out);
    out << "Copying into " << arguments.targetDir.string() << ":\n";
    CopyVmItems(copies, out);

    const std::vector<vm_summary_row_t> rows = ReportVms(tools.host, arguments, vms, copies);
    // The proxy lets go of the copies it read before the host completes the backup.
    proxyCloser.Close();
    hostCloser.Close();
    tools.proxy.Disconnect();
    tools.host.Disconnect();
    out << "Import and snapshot closed.\n\n";
    PrintBackupSummary(rows, out);
    return CopiesExitStatus(copies);
}

} // namespace

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
        return run_road({*host, *proxy}, parsed.backup, document, vms, out);
    } catch (const server_failure_exc_t& e) {
        out << "\nOff-host backup failed. " << e.what() << '\n';
        return exit_error_response;
    }
}

} // namespace client

#include "client/backup_roads.h"

#include "client/offhost_road.h"
#include "common/format/format.h"

#include <ostream>

namespace client {

namespace {

std::string task_line(const char* task, const GUID& id, const char* where) {
    return std::string(task) + " " + to_ansi_nothrow(guid_to_wstring(id)) + " started" + where + ".\n";
}

} // namespace

std::vector<vm_summary_row_t> RunOnHostRoad(CInvokeClient& host, const backup_job_t& job,
                                            const std::vector<spec_vm_t>& vms, const vm_items_work_t& work,
                                            std::ostream& out) {
    out << task_line("Snapshot task", BeginSnapshot(host, job), "");
    CSnapshotCloser closer(host);
    WaitForCompletion(host, WaitLineOn(out, "Creating the snapshot", "Snapshot task"));
    GetSnapshotDocuments(host);

    out << "Files of the VMs:\n";
    const vm_items_source_t itemsOnHost = [&](const spec_vm_t& vm) { return GetVmItems(host, vm.guid); };
    const std::vector<vm_summary_row_t> rows = WorkAndReportVms(host, itemsOnHost, vms, work, out);
    closer.Close();
    host.Disconnect();
    out << "Snapshot closed.\n\n";
    return rows;
}

std::vector<vm_summary_row_t> RunOffhostRoad(CInvokeClient& host, CInvokeClient& proxy,
                                             const backup_job_t& job, const std::vector<spec_vm_t>& vms,
                                             const vm_items_work_t& work, std::ostream& out) {
    CSnapshotCloser hostCloser(host);
    out << task_line("Snapshot task", BeginSnapshot(host, job), " on the host");
    WaitForCompletion(host, WaitLineOn(out, "Creating the snapshot", "Snapshot task"));
    const snapshot_documents_t documents = GetSnapshotDocuments(host);
    if (documents.snapshotsXml.empty())
        throw server_failure_exc_t(
            "The host made no transportable snapshot: the specification doesn't ask for an off-host backup.");

    CSnapshotCloser proxyCloser(proxy);
    out << task_line("Import task", BeginSnapshotImport(proxy, documents, job), " on the proxy");
    WaitForCompletion(proxy, WaitLineOn(out, "Importing the snapshot", "Import task"));

    out << "Files of the VMs, on the proxy's shadow copies:\n";
    const vm_items_source_t itemsOnProxy = [&](const spec_vm_t& vm) {
        return ConvertOffhostPaths(proxy, GetVmItems(host, vm.guid));
    };
    const std::vector<vm_summary_row_t> rows = WorkAndReportVms(host, itemsOnProxy, vms, work, out);
    // The proxy lets go of the copies it read before the host completes the backup.
    proxyCloser.Close();
    hostCloser.Close();
    proxy.Disconnect();
    host.Disconnect();
    out << "Import and snapshot closed.\n\n";
    return rows;
}

} // namespace client

#include "client/offhost_road.h"

#include "common/exc/convert.h"

namespace client {

GUID BeginSnapshotImport(CInvokeClient& proxy, const snapshot_documents_t& documents,
                         const backup_job_t& job) {
    CRequestArguments arguments;
    arguments.AddEncoded(L"BackupDoc", documents.backupDoc)
        .AddEncoded(L"SnapshotIDsList", documents.snapshotsXml)
        .AddText(L"JobName", job.jobName)
        .AddText(L"BackupConsole", job.backupConsole);
    return string_to_guid(CallForSuccess(proxy, L"BeginSnapshotImport", arguments).Value(L"SnapshotId"));
}

ItemsList ConvertOffhostPaths(CInvokeClient& proxy, const ItemsList& items) {
    CRequestArguments arguments;
    arguments.AddEncoded(L"InPathsXML", SerializeItemsList(items));
    ItemsList converted;
    DeserializeItemsList(CallForSuccess(proxy, L"ConvertOffhostPaths", arguments).Decoded(L"OutPathsXML"),
                         converted);
    return converted;
}

} // namespace client

// The backup server's side of an import task on the proxy, one command per function;
// the rest of the road is the snapshot task's (client/snapshot_road.h).
#pragma once

#include "client/snapshot_road.h"

namespace client {

// Starts the import of the host task's snapshot from its documents; the import
// task's id. A failure frame throws server_failure_exc_t.
GUID BeginSnapshotImport(CInvokeClient& proxy, const snapshot_documents_t& documents,
                         const backup_job_t& job);

// The items with their paths on the proxy's imported shadow copies.
ItemsList ConvertOffhostPaths(CInvokeClient& proxy, const ItemsList& items);

} // namespace client

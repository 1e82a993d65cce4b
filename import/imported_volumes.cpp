#include "import/imported_volumes.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "documents/snapshot_ids.h"

#include <vector>

namespace hv {

std::shared_ptr<CVssImportSnapshotResult>
EnumerateImportedVolumes(VSSUtils::BackupComponentsPtr components,
                         const std::shared_ptr<CImportSnapshotContext>& context) {
    return exc::traced("Failed to enumerate mount points for imported snapshots.", [&] {
        log_scope_t scope(logging::tool_logger(), "Enumerating mount points for imported snapshots.");
        SnapshotIdList ids;
        DeserializeSnapshotIds(context->snapshotIdsList, ids);
        auto snapshots = std::make_shared<std::vector<VSSUtils::VSS_SNAPSHOT_INFO>>();
        for (const VSS_ID& id : ids) {
            VSSUtils::VSS_SNAPSHOT_INFO snapshot = VSSUtils::GetSnapshotInfo(components, id);
            log_info(logging::tool_logger(), "Mount point for volume [%1] is [%2].",
                     to_ansi_nothrow(snapshot.oldVolume), to_ansi_nothrow(snapshot.newVolume));
            snapshots->push_back(std::move(snapshot));
        }
        auto result = std::make_shared<CVssImportSnapshotResult>(std::move(snapshots));
        scope.close_quietly();
        return result;
    });
}

} // namespace hv

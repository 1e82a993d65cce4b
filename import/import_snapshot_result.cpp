#include "import/import_snapshot_result.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "snapshot/shadow_paths.h"

namespace hv {

CVssImportSnapshotResult::CVssImportSnapshotResult(
    std::shared_ptr<const std::vector<VSSUtils::VSS_SNAPSHOT_INFO>> snapshots)
    : snapshots(std::move(snapshots)) {}

void UpdateItems(const std::wstring& oldVolume, const std::wstring& newVolume, ItemsList& items) {
    const std::string oldText = to_ansi(oldVolume);
    const std::string newText = to_ansi(newVolume);
    log_info(logging::tool_logger(), "Old volume: [%1], new volume: [%2]", oldText, newText);
    log_scope_t scope(logging::tool_logger(),
                      "Updating paths for files on volume [%1] ( shadow copy path: [%2])", oldText, newText);
    // The same rewriting the host does for an on-host task, a machine later.
    impl::MapVmItems(items, oldVolume, newVolume);
    scope.close_quietly();
}

std::wstring CVssImportSnapshotResult::ConvertOffhostPaths(const std::wstring& itemsXml) const {
    try {
        log_scope_t scope(logging::tool_logger(), "Obtaining paths to shadow copies of the specified files.");
        log_info(logging::tool_logger(), "XML specification: [%1].", to_ansi(itemsXml));
        ItemsList items;
        DeserializeItemsList(itemsXml, items);
        // Once per snapshot: a rewritten path starts with a device name, which no
        // later snapshot's volume name matches.
        for (const VSSUtils::VSS_SNAPSHOT_INFO& snapshot : *snapshots)
            UpdateItems(snapshot.oldVolume, snapshot.newVolume, items);
        std::wstring converted = SerializeItemsList(items);
        scope.close_quietly();
        return converted;
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to obtain paths to shadow items on imported snapshot.", e);
    }
}

} // namespace hv

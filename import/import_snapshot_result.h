// What an import leaves behind for the server: each imported snapshot's source
// volume and the device that now shows its copy on this machine. It outlives the
// imported snapshot itself, and only holds strings, so the main thread may use
// it without COM.
#pragma once

#include "documents/files_list.h"
#include "vssutils/snapshot_info.h"

#include <memory>
#include <string>
#include <vector>

namespace hv {

class CVssImportSnapshotResult {
public:
    // One record per id of the imported list, in the list's order.
    explicit CVssImportSnapshotResult(
        std::shared_ptr<const std::vector<VSSUtils::VSS_SNAPSHOT_INFO>> snapshots);

    const std::vector<VSSUtils::VSS_SNAPSHOT_INFO>& Snapshots() const { return *snapshots; }

    // Items list XML in, the same items with each FullPath moved from its host
    // volume to the imported copy; items on no imported volume come back as they were.
    // Both as UTF-8, the form in which the list crosses the pipe.
    std::string ConvertOffhostPaths(const std::string& itemsXml) const;

private:
    std::shared_ptr<const std::vector<VSSUtils::VSS_SNAPSHOT_INFO>> snapshots;
};

// Moves the items that lie on oldVolume over to newVolume, in a log block of its own.
void UpdateItems(const std::wstring& oldVolume, const std::wstring& newVolume, ItemsList& items);

} // namespace hv

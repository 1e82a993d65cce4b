#include "import/import_snapshot_result.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "snapshot/shadow_paths.h"

#include <string>
#include <string_view>

namespace hv {

CVssImportSnapshotResult::CVssImportSnapshotResult(
    std::shared_ptr<const std::vector<VSSUtils::VSS_SNAPSHOT_INFO>> imported)
    : snapshots(std::move(imported)) {}

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

namespace {

// The list runs to megabytes: its narrow text is put into the line and let go before the line is
// written, so that the log's own copy is the only other one.
std::string ItemsLogLine(const std::string& itemsXml) {
    constexpr std::string_view line = "XML specification: [%1].";
    const std::size_t marker = line.find("%1");
    std::string line_text;
    {
        const std::string narrow = utf8_to_ansi(itemsXml);
        line_text.reserve(line.size() - 2 + narrow.size());
        line_text += line.substr(0, marker);
        line_text += narrow;
    }
    line_text += line.substr(marker + 2);
    return line_text;
}

} // namespace

std::string CVssImportSnapshotResult::ConvertOffhostPaths(const std::string& itemsXml) const {
    return exc::traced("Failed to obtain paths to shadow items on imported snapshot.", [&] {
        log_scope_t scope(logging::tool_logger(), "Obtaining paths to shadow copies of the specified files.");
        log_info(logging::tool_logger(), ItemsLogLine(itemsXml));
        ItemsList items;
        DeserializeItemsListUtf8(itemsXml, items);
        // Once per snapshot: a rewritten path starts with a device name, which no
        // later snapshot's volume name matches.
        for (const VSSUtils::VSS_SNAPSHOT_INFO& snapshot : *snapshots)
            UpdateItems(snapshot.oldVolume, snapshot.newVolume, items);
        std::string converted = SerializeItemsListUtf8(items);
        scope.close_quietly();
        return converted;
    });
}

} // namespace hv

// What a proxy needs to take over a transportable snapshot made on the host.
#pragma once

#include <string>

namespace hv {

struct CImportSnapshotContext {
    CImportSnapshotContext(const std::wstring& backupDocument, const std::wstring& snapshotIdsList)
        : backupDocument(backupDocument), snapshotIdsList(snapshotIdsList) {}

    const std::wstring backupDocument;
    // The XML text of the snapshot ID list.
    const std::wstring snapshotIdsList;
};

} // namespace hv

// What a proxy needs to take over a transportable snapshot made on the host.
#pragma once

#include <string>

namespace hv {

struct CImportSnapshotContext {
    CImportSnapshotContext(const std::wstring& backupDoc, const std::wstring& idsXml)
        : backupDocument(backupDoc), snapshotIdsList(idsXml) {}

    const std::wstring backupDocument;
    // The XML text of the snapshot ID list.
    const std::wstring snapshotIdsList;
};

} // namespace hv

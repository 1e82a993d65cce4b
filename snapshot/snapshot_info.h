// The three documents of a snapshot that stands, as the server fetches them.
#pragma once

#include <string>

namespace impl {

struct CSnapshotInfo {
    std::wstring BackupDoc;
    std::wstring WriterDoc;
    // The snapshot ID list where the task made a transportable set, else empty.
    std::wstring SnapshotsXML;
};

} // namespace impl

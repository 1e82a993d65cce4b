#include "tool/snapshot_id.h"

namespace tool {

GUID NewSnapshotId() {
    GUID id = GUID_NULL;
    // A failure leaves the null id; nothing downstream depends on uniqueness for safety.
    (void)CoCreateGuid(&id);
    return id;
}

} // namespace tool

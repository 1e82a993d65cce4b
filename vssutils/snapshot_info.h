// What a snapshot of the set is: its id, the volume it copies, and the device that shows the copy.
#pragma once

#include "vssutils/com.h"

#include <string>

namespace VSSUtils {

struct VSS_SNAPSHOT_INFO {
    VSS_ID snapshotId = GUID_NULL;
    std::wstring oldVolume; // the source volume, as VSS names it
    std::wstring newVolume; // the shadow copy's device, as VSS gives it
};

VSS_SNAPSHOT_INFO GetSnapshotInfo(BackupComponentsPtr components, const VSS_ID& snapshotId);

} // namespace VSSUtils

// The volumes of a snapshot come from the VMs' files and from nothing else.
#pragma once

#include "snapshot/backup_vm_info.h"
#include "vssutils/com.h"

namespace VSSUtils {
class CVolumesHolder;
}

namespace impl {

// Adds the volume of each item to the set and rewrites the item's fullPath to its
// volume-name form.
void CollectVolumesOfVm(CBackupVmInfo& vm, VSSUtils::CVolumesHolder& volumes,
                        VSSUtils::BackupComponentsPtr components);

// A provider that refuses a volume is asked once more after this pause.
inline constexpr unsigned VolumeSupportRetryMs = 3000;

// Is the volume supported, asked twice at most? The pause between the questions
// isn't cut short by anything.
bool IsVolumeSupportedWithRetry(VSSUtils::BackupComponentsPtr components, const std::wstring& volumeName,
                                const GUID& providerId);

} // namespace impl

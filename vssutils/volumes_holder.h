// The volume set of one snapshot: which volume each backup item lies on, the volumes to snapshot,
// and the cluster shared volumes prepared on the way.
#pragma once

#include "compat/ascii_case.h"
#include "vssutils/com.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace VSSUtils {

class CVolumesHolder {
public:
    CVolumesHolder() = default;
    // Unless keepCsvState is set, undoes every CSV preparation; never throws.
    ~CVolumesHolder();
    CVolumesHolder(const CVolumesHolder&) = delete;
    CVolumesHolder& operator=(const CVolumesHolder&) = delete;

    // Records the item's volume and returns the item's path with its mount point replaced by the
    // volume name. Entries of earlier items stay when an item fails.
    std::wstring AddBackupItem(const std::wstring& itemPath, BackupComponentsPtr components);

    // The mount point whose volume name this is (first in map order); unknown names fail.
    std::wstring FindMountPoint(const std::wstring& volumeName) const;

    void LogMappings() const;

    // Set once the snapshot exists: from then on the cluster keeps the backup state of its volumes.
    bool keepCsvState = false;
    // One entry per preparation, in order.
    std::vector<std::wstring> preparedCsvFiles;
    // Mount point to volume name.
    std::map<std::wstring, std::wstring, compat::less_t> mountPoints;
    // In order of first appearance, without duplicates.
    std::vector<std::wstring> volumesToSnapshot;

private:
    std::wstring AddCsvItem(const std::wstring& itemPath);
    std::wstring AddFileShareItem(const std::wstring& itemPath, BackupComponentsPtr components);
    std::wstring AddLocalItem(const std::wstring& itemPath);
    void AddVolume(const std::wstring& mountPoint, const std::wstring& volumeName);
    void ClearCsvState() noexcept;

    // Index over volumesToSnapshot, so that a new item costs no scan of the earlier ones.
    std::set<std::wstring, compat::less_t> knownVolumes_;
};

// The item's path with the mount point's length cut off its front and the volume name put there.
std::wstring VolumePath(const std::wstring& itemPath, const std::wstring& mountPoint,
                        const std::wstring& volumeName);

} // namespace VSSUtils

// Volume names and mount points.
#pragma once

#include <string>
#include <vector>

namespace win {

// GetVolumePathNameW: the mount point that holds the file, closing backslash
// included. Throws exc::win_sys_exc_t "Failed to get volume mount point. File name: [%1]".
std::wstring volume_mount_point(const std::wstring& file_name);

// GetVolumeNameForVolumeMountPointW: "\\?\Volume{...}\". Throws
// exc::win_sys_exc_t "Failed to get volume device name. Volume mount point: [%1]".
std::wstring volume_device_name(const std::wstring& mount_point);

// GetVolumePathNamesForVolumeNameW: every mount point of the volume, the
// first one the system reports first; empty when it has none. Throws
// exc::win_sys_exc_t "Failed to get volume mount points. Volume name: [%1]".
std::vector<std::wstring> volume_mount_points(const std::wstring& volume_name);

// "%SystemDrive%\ClusterStorage", expanded.
std::wstring cluster_storage_root();

} // namespace win

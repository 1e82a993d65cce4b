#include "common/win/volume_os.h"

#include "hostsim/host_access.h"

namespace win::detail {

DWORD os_volume_path_name(const std::wstring& file_name, std::wstring& mount_point) {
    if (auto fault = hostsim::win32_call("GetVolumePathNameW", file_name))
        return *fault;
    auto found = hostsim::volume_path_name(file_name);
    if (!found)
        return ERROR_PATH_NOT_FOUND;
    mount_point = std::move(*found);
    return ERROR_SUCCESS;
}

DWORD os_volume_name_for_mount_point(const std::wstring& mount_point, std::wstring& volume_name) {
    if (auto fault = hostsim::win32_call("GetVolumeNameForVolumeMountPointW", mount_point))
        return *fault;
    auto found = hostsim::volume_name_for_mount_point(mount_point);
    if (!found)
        return ERROR_PATH_NOT_FOUND;
    volume_name = std::move(*found);
    return ERROR_SUCCESS;
}

DWORD os_volume_path_names(const std::wstring& volume_name, std::vector<std::wstring>& mount_points) {
    if (auto fault = hostsim::win32_call("GetVolumePathNamesForVolumeNameW", volume_name))
        return *fault;
    mount_points = hostsim::mount_points_of_volume(volume_name);
    return ERROR_SUCCESS;
}

} // namespace win::detail

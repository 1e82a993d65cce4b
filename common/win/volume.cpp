#include "common/win/volume.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/volume_os.h"

namespace win {

std::wstring volume_mount_point(const std::wstring& file_name) {
    std::wstring mount_point;
    const DWORD error = detail::os_volume_path_name(file_name, mount_point);
    if (error != ERROR_SUCCESS)
        throw exc::win_sys_exc_t("Failed to get volume mount point. File name: [%1]",
                                 to_ansi_nothrow(file_name), error);
    return mount_point;
}

std::wstring volume_device_name(const std::wstring& mount_point) {
    std::wstring volume_name;
    const DWORD error = detail::os_volume_name_for_mount_point(mount_point, volume_name);
    if (error != ERROR_SUCCESS)
        throw exc::win_sys_exc_t("Failed to get volume device name. Volume mount point: [%1]",
                                 to_ansi_nothrow(mount_point), error);
    return volume_name;
}

std::vector<std::wstring> volume_mount_points(const std::wstring& volume_name) {
    std::vector<std::wstring> mount_points;
    const DWORD error = detail::os_volume_path_names(volume_name, mount_points);
    if (error != ERROR_SUCCESS)
        throw exc::win_sys_exc_t("Failed to get volume mount points. Volume name: [%1]",
                                 to_ansi_nothrow(volume_name), error);
    return mount_points;
}

std::wstring cluster_storage_root() {
    return expand_env(L"%SystemDrive%\\ClusterStorage");
}

} // namespace win

#include "common/win/volume.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "common/win/last_error.h"
#include "common/win/volume_os.h"

namespace win {

std::wstring volume_mount_point(const std::wstring& file_name) {
    std::wstring mount_point;
    throw_if_failed(detail::os_volume_path_name(file_name, mount_point),
                    "Failed to get volume mount point. File name: [%1]", file_name);
    return mount_point;
}

std::wstring volume_device_name(const std::wstring& mount_point) {
    std::wstring volume_name;
    throw_if_failed(detail::os_volume_name_for_mount_point(mount_point, volume_name),
                    "Failed to get volume device name. Volume mount point: [%1]", mount_point);
    return volume_name;
}

std::vector<std::wstring> volume_mount_points(const std::wstring& volume_name) {
    std::vector<std::wstring> mount_points;
    throw_if_failed(detail::os_volume_path_names(volume_name, mount_points),
                    "Failed to get volume mount points. Volume name: [%1]", volume_name);
    return mount_points;
}

std::wstring cluster_storage_root() {
    return expand_env(L"%SystemDrive%\\ClusterStorage");
}

} // namespace win

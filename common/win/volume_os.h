// The platform's volume calls under common/win/volume.h: 0 or the Win32 error.
#pragma once

#include "compat/win_types.h"

#include <string>
#include <vector>

namespace win::detail {

DWORD os_volume_path_name(const std::wstring& file_name, std::wstring& mount_point);
DWORD os_volume_name_for_mount_point(const std::wstring& mount_point, std::wstring& volume_name);
DWORD os_volume_path_names(const std::wstring& volume_name, std::vector<std::wstring>& mount_points);

} // namespace win::detail

#include "common/win/volume_os.h"

namespace win::detail {

namespace {

constexpr DWORD volume_buffer_length = MAX_PATH;

// A list of texts, each closed by a zero, the list by one more.
std::vector<std::wstring> split_multi_string(const std::vector<wchar_t>& buffer) {
    std::vector<std::wstring> texts;
    for (const wchar_t* p = buffer.data(); p < buffer.data() + buffer.size() && *p != L'\0';) {
        texts.emplace_back(p);
        p += texts.back().size() + 1;
    }
    return texts;
}

} // namespace

DWORD os_volume_path_name(const std::wstring& file_name, std::wstring& mount_point) {
    wchar_t buffer[volume_buffer_length] = {};
    if (!::GetVolumePathNameW(file_name.c_str(), buffer, volume_buffer_length))
        return ::GetLastError();
    mount_point = buffer;
    return ERROR_SUCCESS;
}

DWORD os_volume_name_for_mount_point(const std::wstring& mount_point, std::wstring& volume_name) {
    wchar_t buffer[volume_buffer_length] = {};
    if (!::GetVolumeNameForVolumeMountPointW(mount_point.c_str(), buffer, volume_buffer_length))
        return ::GetLastError();
    volume_name = buffer;
    return ERROR_SUCCESS;
}

DWORD os_volume_path_names(const std::wstring& volume_name, std::vector<std::wstring>& mount_points) {
    std::vector<wchar_t> buffer(volume_buffer_length, L'\0');
    for (;;) {
        DWORD needed = 0;
        if (::GetVolumePathNamesForVolumeNameW(volume_name.c_str(), buffer.data(),
                                               static_cast<DWORD>(buffer.size()), &needed)) {
            mount_points = split_multi_string(buffer);
            return ERROR_SUCCESS;
        }
        const DWORD error = ::GetLastError();
        if (error != ERROR_MORE_DATA || needed <= buffer.size())
            return error;
        buffer.assign(needed, L'\0');
    }
}

} // namespace win::detail

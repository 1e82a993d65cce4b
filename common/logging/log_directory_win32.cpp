#include "common/logging/log_directory.h"

#include "compat/win_types.h"

#include <shlobj.h>

namespace logging::platform {

std::wstring common_app_data_folder() {
    wchar_t folder[MAX_PATH] = {};
    if (FAILED(::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder)))
        return std::wstring();
    return folder;
}

} // namespace logging::platform

#include "common/win/folder.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/file_system_os.h"
#include "common/win/last_error.h"
#include "common/win/path.h"

namespace win {

namespace {

std::wstring strip_trailing_backslashes(const std::wstring& path) {
    std::size_t end = path.size();
    while (end > 0 && path[end - 1] == L'\\')
        --end;
    return path.substr(0, end);
}

// The entry at the path: false when it is not there; throws for other errors.
bool find_entry(const std::wstring& path, find_data_t& entry) {
    detail::os_search_t search;
    const DWORD error = detail::find_first_with_retry(path, search, entry);
    if (error == ERROR_SUCCESS)
        return true;
    if (is_not_there(error))
        return false;
    throw exc::win_sys_exc_t("Failed to check whether folder '%1' exists.", to_ansi_nothrow(path), error);
}

// The parent of a UNC path must still hold server and share; below "\\server" there is
// nothing to create.
bool is_valid_parent(const std::wstring& path, const std::wstring& parent) {
    if (parent.empty())
        return false;
    if (is_unc_share_path(path) || is_unc_share_path(parent) ||
        (parent.size() >= 2 && parent[0] == L'\\' && parent[1] == L'\\'))
        return path_components(parent).size() >= 2;
    return true;
}

// Nothing but the lead of a UNC or device path ("\\", "\\?\", "\\.\", "\\?\UNC\"), or
// nothing at all, once the closing backslashes are off.
bool is_bare_prefix(const std::wstring& stripped) {
    return stripped.empty() || stripped == L"\\\\?" || stripped == L"\\\\." ||
           iequals(stripped, L"\\\\?\\UNC");
}

void create_folder_steps(const std::wstring& given) {
    const std::wstring path = strip_trailing_backslashes(given);
    // Named as given: what is left of a bare prefix would name a folder that no one asked for.
    if (is_bare_prefix(path))
        throw exc::runtime_exc_t("Invalid folder path: [%1].", to_ansi_nothrow(given));
    if (folder_exists(path))
        return;
    if (!path.empty() && path.back() == L':')
        return;
    const std::wstring parent = parent_path(path);
    if (!is_valid_parent(path, parent))
        throw exc::runtime_exc_t("Invalid folder path: [%1].", to_ansi_nothrow(path));
    create_folder(parent);
    const DWORD error = detail::os_create_directory(path);
    // Another thread or process may have made the folder since it was looked for: what was
    // asked for is there, and that is all the caller wants.
    if (error == ERROR_ALREADY_EXISTS && folder_exists(path))
        return;
    throw_if_failed(error, "CreateDirectory(%1) function call failed.", path);
}

} // namespace

bool path_exists(const std::wstring& path, bool& is_folder) {
    is_folder = false;
    if (is_root_path(path)) {
        is_folder = true;
        return detail::os_path_file_exists(path);
    }
    find_data_t entry;
    if (!find_entry(strip_trailing_backslashes(path), entry))
        return false;
    is_folder = entry.is_directory();
    return true;
}

bool path_exists(const std::wstring& path) {
    bool is_folder = false;
    return path_exists(path, is_folder);
}

bool folder_exists(const std::wstring& path) {
    if (is_root_path(path))
        return detail::os_path_file_exists(path);
    const std::wstring stripped = strip_trailing_backslashes(path);
    if (stripped.empty())
        return false;
    find_data_t entry;
    return find_entry(stripped, entry) && entry.is_directory();
}

bool folder_exists(const std::string& utf8_path) {
    return folder_exists(from_utf8(utf8_path));
}

void create_folder(const std::wstring& path) {
    try {
        create_folder_steps(path);
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Cannot create folder. Folder path: [%1].", to_ansi_nothrow(path), e);
    }
}

} // namespace win

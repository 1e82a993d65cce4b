#include "common/win/local_path.h"

#include "common/win/native_name_posix.h"
#include "hostsim/host_access.h"

#include <system_error>

namespace win {

namespace {

// Neither "X:..." nor "\..." nor "/...": Windows resolves such a path against the
// current directory, which is a native one here.
bool is_relative(const std::wstring& path) {
    const bool drive_qualified = path.size() >= 2 && path[1] == L':';
    return !drive_qualified && path[0] != L'\\' && path[0] != L'/';
}

// A native path names its file by bytes: those that were not UTF-8 come back as they were given.
std::filesystem::path native_form(const std::wstring& path) {
    std::wstring native = path;
    for (auto& c : native)
        if (c == L'\\')
            c = L'/';
    return native_name_bytes(native);
}

} // namespace

std::optional<std::filesystem::path> local_path(const std::wstring& windows_path) {
    if (windows_path.empty())
        return std::nullopt;
    if (windows_path[0] == L'/')
        return native_form(windows_path);
    if (is_relative(windows_path)) {
        std::error_code ec;
        const std::filesystem::path absolute = std::filesystem::absolute(native_form(windows_path), ec);
        if (ec)
            return std::nullopt;
        return absolute;
    }
    return hostsim::map_path(windows_path);
}

} // namespace win

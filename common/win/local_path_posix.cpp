#include "common/win/local_path.h"

#include "common/format/format.h"
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

} // namespace

std::optional<std::filesystem::path> local_path(const std::wstring& windows_path) {
    if (windows_path.empty())
        return std::nullopt;
    if (is_relative(windows_path)) {
        std::wstring native = windows_path;
        for (auto& c : native)
            if (c == L'\\')
                c = L'/';
        std::error_code ec;
        std::string utf8;
        try {
            utf8 = to_utf8(native);
        } catch (const std::exception&) {
            return std::nullopt;
        }
        const std::filesystem::path absolute = std::filesystem::absolute(utf8, ec);
        if (ec)
            return std::nullopt;
        return absolute;
    }
    return hostsim::map_path(windows_path);
}

} // namespace win

#include "common/win/local_path.h"

#include "hostsim/host_access.h"

namespace win {

std::optional<std::filesystem::path> local_path(const std::wstring& windows_path) {
    if (windows_path.empty())
        return std::nullopt;
    return hostsim::map_path(windows_path);
}

} // namespace win

#include "client/shadow_item_path.h"

#include "hostsim/host_access.h"

namespace client {

std::optional<std::filesystem::path> LocalPathOfItem(const std::wstring& fullPath) {
    return hostsim::map_path(fullPath);
}

} // namespace client

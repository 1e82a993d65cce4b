#include "client/shadow_item_path.h"

namespace client {

std::optional<std::filesystem::path> LocalPathOfItem(const std::wstring& fullPath) {
    if (fullPath.empty())
        return std::nullopt;
    return std::filesystem::path(fullPath);
}

} // namespace client

// Placeholder answers until the host model is loaded: an empty host.
#include "hostsim/host_access.h"

namespace hostsim {

bool host_selected() { return false; }

std::optional<std::filesystem::path> map_path(const std::wstring& windows_path) {
    if (!windows_path.empty() && windows_path[0] == L'/') {
        std::wstring p = windows_path;
        for (auto& c : p)
            if (c == L'\\')
                c = L'/';
        return std::filesystem::path(p);
    }
    return std::nullopt;
}
std::optional<std::wstring> volume_path_name(const std::wstring&) { return std::nullopt; }
std::optional<std::wstring> volume_name_for_mount_point(const std::wstring&) { return std::nullopt; }
std::vector<std::wstring> mount_points_of_volume(const std::wstring&) { return {}; }
bool registry_key_exists(const std::wstring&) { return false; }
std::optional<registry_value_t> registry_value(const std::wstring&, const std::wstring&) { return std::nullopt; }
std::optional<std::wstring> environment_variable(const std::wstring&) { return std::nullopt; }
std::optional<std::uint32_t> win32_call(const char*, const std::wstring&) { return std::nullopt; }

} // namespace hostsim

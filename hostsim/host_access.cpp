// The POSIX platform wrappers' view of the simulated host that MIRRACK_HOST names.
#include "hostsim/host_access.h"

#include "hostsim/host.h"
#include "hostsim/wide_text.h"

#include <cwchar>

namespace hostsim {

namespace {

std::wstring key_without_root(std::wstring key) {
    for (const wchar_t* root : {L"HKEY_LOCAL_MACHINE\\", L"HKLM\\"})
        if (istarts_with(key, root))
            key = key.substr(std::wcslen(root));
    while (!key.empty() && key.back() == L'\\')
        key.pop_back();
    while (!key.empty() && key.front() == L'\\')
        key.erase(0, 1);
    return key;
}

} // namespace

bool host_selected() {
    return current_host()->selected();
}

std::optional<std::filesystem::path> map_path(const std::wstring& windows_path) {
    return current_host()->map_path(windows_path);
}

std::optional<std::wstring> volume_path_name(const std::wstring& path) {
    auto loc = current_host()->locate(path);
    if (loc.kind == location_kind::none || loc.kind == location_kind::native)
        return std::nullopt;
    // The answer keeps the long-path form the question was asked in.
    if (istarts_with(path, L"\\\\?\\UNC\\") && istarts_with(loc.root, L"\\\\"))
        return L"\\\\?\\UNC\\" + loc.root.substr(2);
    if (istarts_with(path, L"\\\\?\\") && loc.root.size() >= 2 && loc.root[1] == L':')
        return L"\\\\?\\" + loc.root;
    return loc.root;
}

std::optional<std::wstring> volume_name_for_mount_point(const std::wstring& mount_point) {
    if (mount_point.empty() || mount_point.back() != L'\\')
        return std::nullopt;
    for (auto& v : current_host()->model().volumes)
        if (snapshot_target_t{&v, nullptr}.named_by(mount_point))
            return v.name;
    return std::nullopt;
}

std::vector<std::wstring> mount_points_of_volume(const std::wstring& volume_name) {
    auto host = current_host();
    for (auto& v : host->model().volumes)
        if (iequals(v.name, with_trailing_backslash(volume_name)))
            return v.mounts;
    return {};
}

bool registry_key_exists(const std::wstring& key_path) {
    const std::wstring wanted = key_without_root(key_path);
    for (auto& key : current_host()->model().registry) {
        const std::wstring have = key_without_root(key.path);
        if (iequals(have, wanted) || wanted.empty() || istarts_with(have, wanted + L"\\"))
            return true;
    }
    return false;
}

std::optional<registry_value_t> registry_value(const std::wstring& key_path, const std::wstring& value_name) {
    const std::wstring wanted = key_without_root(key_path);
    for (auto& key : current_host()->model().registry) {
        if (!iequals(key_without_root(key.path), wanted))
            continue;
        for (auto& v : key.values)
            if (iequals(v.name, value_name))
                return registry_value_t{v.type, v.text, v.number};
    }
    return std::nullopt;
}

std::optional<std::wstring> environment_variable(const std::wstring& name) {
    return current_host()->environment_variable(name);
}

std::optional<std::uint32_t> win32_call(const char* op, const std::wstring& main_argument) {
    auto host = current_host();
    if (!host->selected())
        return std::nullopt;
    // A native path needs no host, so a host that cannot be read does not take it away.
    if (!host->usable() && host->locate(main_argument).kind == location_kind::native)
        return std::nullopt;
    return host->enter(op, {main_argument}).err;
}

} // namespace hostsim

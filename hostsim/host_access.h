// What the POSIX platform wrappers ask of the simulated host. Reached only from
// the *_posix.cpp files of common/ (and compat/), never from the logic.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace hostsim {

// Is a host selected (MIRRACK_HOST set)? Without one the host is empty.
bool host_selected();

// A Windows-form path (C:\..., \\?\Volume{...}\..., \\?\GLOBALROOT\Device\HarddiskVolumeShadowCopyN\...,
// \\server\share\...) or a native path beginning with '/', to a local path.
// nullopt: the path cannot be found (Win32 error 3).
std::optional<std::filesystem::path> map_path(const std::wstring& windows_path);

// GetVolumePathNameW: the mount point (or share root) under which the path lies, with a trailing
// backslash. nullopt: error 3.
std::optional<std::wstring> volume_path_name(const std::wstring& path);

// GetVolumeNameForVolumeMountPointW: "\\?\Volume{...}\" for a mount point with a trailing backslash.
std::optional<std::wstring> volume_name_for_mount_point(const std::wstring& mount_point);

// GetVolumePathNamesForVolumeNameW: the mount points of a volume, first the one the host reports first.
std::vector<std::wstring> mount_points_of_volume(const std::wstring& volume_name);

struct registry_value_t {
    std::uint32_t type = 0; // REG_SZ 1, REG_DWORD 4
    std::wstring text;
    std::uint32_t number = 0;
};
// HKEY_LOCAL_MACHINE only. key_exists: does the key exist.
bool registry_key_exists(const std::wstring& key_path);
std::optional<registry_value_t> registry_value(const std::wstring& key_path, const std::wstring& value_name);

// %NAME%: the host's <Environment> first, then the process environment.
std::optional<std::wstring> environment_variable(const std::wstring& name);

// FormatMessage's texts, closing line break included: the system's table (Win32 codes, those
// carried in HRESULTs, and the few other HRESULTs it knows), the internet functions' table, and
// the message module of VSS. nullopt: no text for the code.
std::optional<std::string> system_message(std::uint32_t code);
std::optional<std::string> internet_message(std::uint32_t code);
std::optional<std::string> vss_message(std::uint32_t id);

// A Win32-style simulated call about to run: journal it and return the Win32 error a <Fault err=...>
// injects for it (op is the call's own name, e.g. L"GetVolumePathNameW"), if any.
std::optional<std::uint32_t> win32_call(const char* op, const std::wstring& main_argument);

} // namespace hostsim

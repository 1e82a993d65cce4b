// Where a Windows-form path lives on this machine. Every path that a POSIX
// platform wrapper hands to the file system goes through here.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace win {

// C:\..., \\?\Volume{...}\..., \\server\share\..., or a native '/' path, to a
// local path. nullopt: the path cannot be found (Win32 error 3).
std::optional<std::filesystem::path> local_path(const std::wstring& windows_path);

} // namespace win

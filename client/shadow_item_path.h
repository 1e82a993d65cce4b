// Where this process finds the file that an item's FullPath names. On a Windows
// host that is the path itself (a shadow copy device is opened like any file); on
// the simulated host it is the host's own mapping of Windows paths, for the host
// that MIRRACK_HOST selects, the same one the tool works on.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace client {

// nullopt: the path lies on nothing this process can reach.
std::optional<std::filesystem::path> LocalPathOfItem(const std::wstring& fullPath);

} // namespace client

// A real point-in-time copy of a directory tree: each file is cloned (a reflink, where the
// file system shares extents) or copied, with its mode and times.
#pragma once

#include <filesystem>
#include <system_error>

namespace hostsim {

// Copies the tree under source into target, which must not exist yet. Entries named in
// skip (absolute paths) are left out. Returns the first error met; the copy is then partial.
std::error_code copy_tree_point_in_time(const std::filesystem::path& source,
                                        const std::filesystem::path& target,
                                        const std::filesystem::path& skip = {});

} // namespace hostsim

// Whether a path lies on a cluster shared volume.
#pragma once

#include <string>

namespace VSSUtils {

// A path that doesn't exist yet is judged by its nearest existing ancestor. Under the cluster storage
// root a "no" can only be a failure of the cluster API, and it throws rather than pass for local.
bool IsPathOnCsv(const std::wstring& path);

} // namespace VSSUtils

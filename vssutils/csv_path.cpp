#include "vssutils/csv_path.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/folder.h"
#include "common/win/path.h"
#include "common/win/volume.h"
#include "compat/ascii_case.h"
#include "compat/cluster_api.h"

namespace VSSUtils {

namespace {

std::wstring nearest_existing(const std::wstring& path) {
    std::wstring current = path;
    bool isFolder = false;
    while (!current.empty() && !win::path_exists(current, isFolder))
        current = win::parent_path(current);
    return current.empty() ? path : current;
}

} // namespace

bool IsPathOnCsv(const std::wstring& path) {
    std::wstring probed = nearest_existing(path);
    if (ClusterIsPathOnSharedVolume(probed.c_str()))
        return true;
    if (compat::istarts_with(probed, win::cluster_storage_root()))
        throw exc::runtime_exc_t("Failed to call function 'ClusterIsPathOnSharedVolume'. Path: '%1'.",
                                 to_ansi_nothrow(path));
    return false;
}

} // namespace VSSUtils

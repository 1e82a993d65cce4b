#include "vssutils/volumes_holder.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/path.h"
#include "common/win/volume.h"
#include "compat/cluster_api.h"
#include "vssutils/backup_components.h"
#include "vssutils/csv_path.h"

namespace VSSUtils {

namespace {

// The size the cluster API is given for each of its two answers.
const DWORD cluster_buffer_length = 260;

bool is_unc_path(const std::wstring& path) {
    return path.size() >= 2 && path[0] == L'\\' && path[1] == L'\\';
}

std::wstring share_mount_point(const std::wstring& path) {
    std::vector<std::wstring> pieces = win::path_components(path);
    if (pieces.size() < 2)
        throw exc::runtime_exc_t("File share path '%1' names no server and share.", to_ansi_nothrow(path));
    return format_message_w(L"\\\\%1\\%2\\", pieces[0], pieces[1]);
}

} // namespace

std::wstring VolumePath(const std::wstring& itemPath, const std::wstring& mountPoint,
                        const std::wstring& volumeName) {
    // Built at its final size: one of these lives for each file of the snapshot.
    const std::size_t cut = std::min(mountPoint.size(), itemPath.size());
    std::wstring path;
    path.reserve(volumeName.size() + itemPath.size() - cut);
    path.append(volumeName).append(itemPath, cut);
    return path;
}

CVolumesHolder::~CVolumesHolder() {
    if (!keepCsvState)
        ClearCsvState();
}

std::wstring CVolumesHolder::AddBackupItem(const std::wstring& itemPath, BackupComponentsPtr components) {
    try {
        // The CSV test comes first: a CSV can be reached by a UNC path too.
        if (IsPathOnCsv(itemPath))
            return AddCsvItem(itemPath);
        if (is_unc_path(itemPath))
            return AddFileShareItem(itemPath, components);
        return AddLocalItem(itemPath);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to obtain shadow path for backup item '%1'.",
                                to_ansi_nothrow(itemPath), e);
    }
}

std::wstring CVolumesHolder::AddCsvItem(const std::wstring& itemPath) {
    log_scope_t scope(logging::tool_logger(), "Preparing CSV '%1' for snapshot.", to_ansi_nothrow(itemPath));
    wchar_t volumePathName[cluster_buffer_length] = {};
    wchar_t volumeName[cluster_buffer_length] = {};
    DWORD volumePathNameLength = cluster_buffer_length;
    DWORD volumeNameLength = cluster_buffer_length;
    DWORD result = ClusterPrepareSharedVolumeForBackup(itemPath.c_str(), volumePathName,
                                                       &volumePathNameLength, volumeName, &volumeNameLength);
    if (result != 0)
        throw exc::win_sys_exc_t("Failed to prepare cluster shared volume for backup. File name: [%1]",
                                 to_ansi_nothrow(itemPath), result);
    preparedCsvFiles.push_back(itemPath);
    scope.finish("CSV is prepared.");

    std::wstring mountPoint(volumePathName);
    AddVolume(mountPoint, volumeName);
    return VolumePath(itemPath, mountPoint, volumeName);
}

std::wstring CVolumesHolder::AddFileShareItem(const std::wstring& itemPath, BackupComponentsPtr components) {
    // The logical prefix that VSS also gives is of no use here.
    std::wstring rootPath = GetFileShareRoot(components, itemPath).rootPath;
    std::wstring mountPoint = share_mount_point(itemPath);
    AddVolume(mountPoint, rootPath);
    return VolumePath(itemPath, mountPoint, rootPath);
}

std::wstring CVolumesHolder::AddLocalItem(const std::wstring& itemPath) {
    std::wstring mountPoint = win::volume_mount_point(itemPath);
    std::wstring volumeName = win::volume_device_name(mountPoint);
    AddVolume(mountPoint, volumeName);
    return VolumePath(itemPath, mountPoint, volumeName);
}

void CVolumesHolder::AddVolume(const std::wstring& mountPoint, const std::wstring& volumeName) {
    mountPoints[mountPoint] = volumeName;
    if (!knownVolumes_.insert(volumeName).second)
        return;
    log_info(logging::tool_logger(), "- volume to snapshot '%1', mount point '%2'",
             to_ansi_nothrow(volumeName), to_ansi_nothrow(mountPoint));
    volumesToSnapshot.push_back(volumeName);
}

std::wstring CVolumesHolder::FindMountPoint(const std::wstring& volumeName) const {
    for (const auto& [mountPoint, name] : mountPoints)
        if (compat::iequals(name, volumeName))
            return mountPoint;
    throw exc::runtime_exc_t("Unable to lookup volume mount point by volume name '%1'.",
                             to_ansi_nothrow(volumeName));
}

void CVolumesHolder::LogMappings() const {
    try {
        log_info(logging::tool_logger(), "The following volumes should be snapshotted:");
        for (const auto& [mountPoint, volumeName] : mountPoints)
            log_info(logging::tool_logger(), "    '%1'. UniqueName: '%2'", to_ansi(mountPoint),
                     to_ansi(volumeName));
    } catch (const std::exception& e) {
        log_exception(logging::tool_logger(), "Failed to list mappings to shadow volumes.", e);
    }
}

void CVolumesHolder::ClearCsvState() noexcept {
    try {
        log_info(logging::tool_logger(), "Clearing CSV backup state.");
        for (const std::wstring& file : preparedCsvFiles) {
            // One file's failure must not keep the others prepared.
            try {
                log_scope_t scope(logging::tool_logger(), "Clearing CSV backup state for file: '%1'.",
                                  to_ansi_nothrow(file));
                DWORD result = ClusterClearBackupStateForSharedVolume(file.c_str());
                if (result != 0)
                    throw exc::win_sys_exc_t("Failed to clear CSV backup state.", result);
                scope.finish("CSV backup state is cleared.");
            } catch (const std::exception& e) {
                log_exception(logging::tool_logger(), e);
            }
        }
    } catch (const std::exception& e) {
        log_exception(logging::tool_logger(), e);
    }
}

} // namespace VSSUtils

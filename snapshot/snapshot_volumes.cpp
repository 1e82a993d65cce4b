#include "snapshot/snapshot_volumes.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "snapshot/provider_choice.h"
#include "snapshot/vss_snapshot.h"
#include "vssutils/backup_components.h"
#include "vssutils/volumes_holder.h"

#include <chrono>
#include <thread>

namespace impl {

void CollectVolumesOfVm(CBackupVmInfo& vm, VSSUtils::CVolumesHolder& volumes,
                        VSSUtils::BackupComponentsPtr components) {
    log_scope_t scope(logging::tool_logger(), "Getting list of volumes to snapshot.");
    for (CFilesListItem& item : vm.files)
        item.fullPath = volumes.AddBackupItem(item.fullPath, components);
    scope.ok();
}

bool IsVolumeSupportedWithRetry(VSSUtils::BackupComponentsPtr components, const std::wstring& volumeName,
                                const GUID& providerId) {
    if (VSSUtils::IsVolumeSupported(components, volumeName, providerId))
        return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(VolumeSupportRetryMs));
    return VSSUtils::IsVolumeSupported(components, volumeName, providerId);
}

std::shared_ptr<VSSUtils::CVolumesHolder> CVssSnapshot::CollectVolumes() {
    auto volumes = std::make_shared<VSSUtils::CVolumesHolder>();
    for (const auto& entry : VMs)
        CollectVolumesOfVm(*entry.second, *volumes, backupComponents);
    volumes->LogMappings();
    return volumes;
}

void CVssSnapshot::AddVolumesToSet(const std::shared_ptr<VSSUtils::CVolumesHolder>& volumes) {
    exc::traced("Failed to add volumes to the snapshot set.", [&] {
        log_scope_t scope(logging::tool_logger(), "Adding volumes to the snapshot set");
        for (const std::wstring& volumeName : volumes->volumesToSnapshot) {
            const GUID providerId = ChooseProvider(*specification, volumes->FindMountPoint(volumeName));
            if (!IsVolumeSupportedWithRetry(backupComponents, volumeName, providerId))
                throw exc::runtime_exc_t("Provider [%1] does not support shadow copies of volume [%2].",
                                         guid_to_string(providerId), to_ansi_nothrow(volumeName));
            snapshotIds.push_back(VSSUtils::AddVolumeToSnapshotSet(backupComponents, volumeName, providerId));
        }
        scope.ok();
    });
}

} // namespace impl

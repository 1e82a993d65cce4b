#include "snapshot/vss_snapshot.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "documents/snapshot_ids.h"
#include "snapshot/snapshot_creation.h"
#include "spec/hv_backup_spec.h"
#include "vssutils/backup_components.h"
#include "vssutils/volumes_holder.h"

namespace impl {

CVssSnapshot::CVssSnapshot(std::shared_ptr<const CHvBackupSpec> specification_,
                           std::shared_ptr<win::win_manual_reset_event_t> cancelEvent_)
    : specification(std::move(specification_)), cancelEvent(std::move(cancelEvent_)) {
    log_scope_t scope(logging::tool_logger(), "Performing VSS backup.");
    InitBackup();
    SelectVms();
    PreBackup();
    scope.finish("VSS backup was successfully completed.");
}

CVssSnapshot::~CVssSnapshot() {
    try {
        log_info(logging::tool_logger(), "Releasing snapshot.");
    } catch (const std::exception& e) {
        try {
            log_exception(logging::tool_logger(), e);
        } catch (...) {
        }
    }
    // The fields go in reverse order: the writer's objects before the backup
    // object, whose last reference is the release of the snapshot.
}

bool CVssSnapshot::IsTransportable() const {
    return specification->offhost->mode == COffhostInfo::Enabled;
}

void CVssSnapshot::PreBackup() {
    exc::traced("Failed to perform pre-backup tasks.", [&] {
        log_scope_t scope(logging::tool_logger(), "Performing pre-backup steps.");
        const VSS_ID setId = VSSUtils::StartSnapshotSet(backupComponents);
        log_info(logging::tool_logger(), "Snapshot set id: %1.", guid_to_string(setId));
        AddVmComponents();
        CollectVmFiles();
        const std::shared_ptr<VSSUtils::CVolumesHolder> volumes = CollectVolumes();
        AddVolumesToSet(volumes);
        CreateSnapshot(backupComponents, cancelEvent);
        // From here a failure leaves the cluster's backup state to the snapshot.
        volumes->keepCsvState = true;
        // A transportable snapshot is mapped on the proxy that imports it.
        if (!IsTransportable()) {
            MapItemsToShadow();
            CheckItemsOnSnapshot();
        }
        backupDocument = VSSUtils::SaveComponentsAsXml(backupComponents);
        writerDocument = VSSUtils::SaveWriterMetadataAsXml(hyperVWriterMetadata->metadata);
        if (IsTransportable())
            snapshotsDocument = SerializeSnapshotIds(snapshotIds);
        scope.finish("Pre-backup phase succeeded.");
    });
}

std::shared_ptr<CVssSnapshotResult> CVssSnapshot::BuildResult() {
    auto info = std::make_shared<CSnapshotInfo>(
        CSnapshotInfo{std::move(backupDocument), std::move(writerDocument), std::move(snapshotsDocument)});
    CVssSnapshotResult::VmFilesMap vmFiles;
    for (const auto& [name, vm] : VMs)
        vmFiles[string_to_guid(name)] = std::move(vm->files);
    return std::make_shared<CVssSnapshotResult>(std::move(info), std::move(vmFiles));
}

} // namespace impl

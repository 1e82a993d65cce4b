#include "snapshot/snapshot_creation.h"

#include "common/exc/exc.h"
#include "common/logging/log.h"
#include "vssutils/async_wait.h"
#include "vssutils/backup_components.h"
#include "vssutils/cancel_callbacks.h"
#include "vssutils/writer_status.h"

namespace impl {

namespace {

const char* const unknownStatusText = "Unknown status of async operation";

void PrepareWriters(VSSUtils::BackupComponentsPtr components, VSSUtils::ITestCancelCallback& probe) {
    VSSUtils::AsyncPtr prepare = VSSUtils::PrepareForBackup(components);
    if (!VSSUtils::WaitAsyncOperation(
            prepare, &probe, "Waiting until Hyper-V writer prepares VMs for snapshot.", unknownStatusText))
        throw exc::runtime_exc_t("Prepare VMs for snapshot task has been cancelled.");
    VSSUtils::VerifyWriters(components, &probe, true);
}

void TakeSnapshot(VSSUtils::BackupComponentsPtr components, VSSUtils::ITestCancelCallback& probe) {
    log_info(logging::tool_logger(), "Creating volumes snapshot.");
    VSSUtils::AsyncPtr snapshot = VSSUtils::DoSnapshotSet(components);
    if (!VSSUtils::WaitAsyncOperation(snapshot, &probe, "Waiting for VSS snapshot task.", unknownStatusText))
        throw exc::runtime_exc_t("Snapshot task has been cancelled.");
    // Only a failed writer speaks this time.
    VSSUtils::VerifyWriters(components, &probe, false);
}

} // namespace

void CreateSnapshot(VSSUtils::BackupComponentsPtr components,
                    const std::shared_ptr<win::win_manual_reset_event_t>& cancelEvent) {
    exc::traced("Failed to create VSS snapshot.", [&] {
        log_scope_t scope(logging::tool_logger(), "Creating snapshot.");
        // Late on purpose: the components and volumes are in the set by now.
        VSSUtils::SetBackupState(components);
        VSSUtils::CWinEventTestCancelCallback probe(cancelEvent);
        PrepareWriters(components, probe);
        TakeSnapshot(components, probe);
        scope.finish("Volumes snapshot is created.");
    });
}

} // namespace impl

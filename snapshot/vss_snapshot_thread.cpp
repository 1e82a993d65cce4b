#include "snapshot/vss_snapshot_thread.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "snapshot/vss_snapshot.h"
#include "vssutils/async_wait.h"
#include "vssutils/backup_components.h"
#include "vssutils/writer_status.h"

namespace {

const impl::STaskWorkerKind snapshotWorker = {"VssSnapshotThread", "Entering in snapshot creation procedure.",
                                              "Leaving snapshot creation procedure.",
                                              impl::ComFailure::Reported};

// Hands each recorded verdict to the writer, completes the backup and checks the
// writers; nothing of this may be cancelled any more.
void CompleteBackup(impl::CVssSnapshot& snapshot, const std::map<GUID, bool, VSSUtils::VssIdLess>& verdicts) {
    for (const auto& [vmId, succeeded] : verdicts)
        snapshot.CompleteVm(vmId, succeeded);
    VSSUtils::CDefaultTestCancelCallback neverCancel;
    VSSUtils::WaitForAsync(VSSUtils::BackupComplete(snapshot.GetBackupComponents()), &neverCancel);
    VSSUtils::CheckWritersStatus(snapshot.GetBackupComponents(), &neverCancel);
}

void SnapshotProc(CVssSnapshotThread2::SShared& task) {
    impl::RunTaskWorker(
        task, snapshotWorker,
        [&] {
            auto snapshot = std::make_unique<impl::CVssSnapshot>(task.specification, task.CloseEvent);
            log_info(logging::tool_logger(), "Volumes snapshot is ready to be processed.");
            task.result = snapshot->BuildResult();
            return snapshot;
        },
        [&](impl::CVssSnapshot& snapshot) { CompleteBackup(snapshot, task.VmCompletions); });
}

} // namespace

CVssSnapshotThread2::CVssSnapshotThread2(const std::wstring& jobName, const std::wstring& backupConsole,
                                         const GUID& snapshotId, std::shared_ptr<CHvBackupSpec> specification,
                                         const SSnapshotTaskLimits& limits) {
    exc::traced("Failed to starting snapshot creation thread.", [&] {
        shared =
            std::make_shared<SShared>(impl::STaskIdentity{jobName, backupConsole, snapshotId}, limits.holdMs);
        shared->specification = std::move(specification);
        log_info(logging::tool_logger(), "Starting VSS backup thread (Snapshot id: '%1', job-owner: '%2').",
                 guid_to_string(snapshotId), to_ansi_nothrow(jobName));
        thread = impl::StartTaskWorker(snapshotWorker, shared, SnapshotProc, limits.joinMs);
    });
}

CVssSnapshotThread2::~CVssSnapshotThread2() {
    thread->Stop();
}

std::shared_ptr<COperationInfo> CVssSnapshotThread2::GetOperationInfo() {
    COperationInfo& info = *shared->operationInfo;
    if (!info.IsCompleted() && thread->HasEnded())
        info.MarkFailed(L"Unspecified error.", local_filetime_now());
    return shared->operationInfo;
}

const CVssSnapshotResult& CVssSnapshotThread2::RequireResult() const {
    return impl::RequireCompleted(*shared, shared->result, "Failed to create snapshot.");
}

std::shared_ptr<impl::CSnapshotInfo> CVssSnapshotThread2::GetCreatedInfo() {
    return RequireResult().info;
}

std::string CVssSnapshotThread2::GetVmFiles(const GUID& vmId) {
    return RequireResult().ListVmFiles(vmId);
}

void CVssSnapshotThread2::SetVmCompletion(const GUID& vmId, bool succeeded) {
    shared->VmCompletions[vmId] = succeeded;
}

std::shared_ptr<wrap::locks::CLockerJobInfo> CVssSnapshotThread2::GetJobInfo() {
    return shared->jobInfo;
}

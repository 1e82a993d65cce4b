#include "snapshot/vss_snapshot_thread.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/event.h"
#include "snapshot/close_wait.h"
#include "snapshot/operation_report.h"
#include "snapshot/vss_snapshot.h"
#include "snapshot/worker_com.h"
#include "vssutils/async_wait.h"
#include "vssutils/backup_components.h"
#include "vssutils/writer_status.h"

namespace {

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
    try {
        log_scope_t scope(logging::tool_logger(), "Entering in snapshot creation procedure.");
        impl::InitializeWorkerCom();
        auto snapshot = std::make_shared<impl::CVssSnapshot>(task.specification, task.CloseEvent);
        log_info(logging::tool_logger(), "Volumes snapshot is ready to be processed.");
        task.result = snapshot->BuildResult();
        impl::ReportSuccess(*task.operationInfo);

        log_info(logging::tool_logger(), "Waiting for backup completion");
        impl::WaitForClose(*task.CloseEvent, task.holdMs);
        CompleteBackup(*snapshot, task.VmCompletions);
        scope.finish("Leaving snapshot creation procedure.");
        // The snapshot is released here, in the apartment that made it.
        snapshot.reset();
        impl::UninitializeWorkerCom();
    } catch (const std::exception& e) {
        // Unwinding has released whatever part of the snapshot stood.
        impl::ReportFailure(*task.operationInfo, e);
        throw;
    }
}

} // namespace

CVssSnapshotThread2::CVssSnapshotThread2(const std::wstring& jobName, const std::wstring& backupConsole,
                                         const GUID& snapshotId, std::shared_ptr<CHvBackupSpec> specification,
                                         const SSnapshotTaskLimits& limits) {
    try {
        shared = std::make_shared<SShared>();
        shared->operationInfo = std::make_shared<COperationInfo>(snapshotId, local_filetime_now());
        shared->jobInfo = std::make_shared<wrap::locks::CLockerJobInfo>(jobName, backupConsole);
        shared->specification = std::move(specification);
        shared->CloseEvent = std::make_shared<win::win_manual_reset_event_t>();
        shared->holdMs = limits.holdMs;
        log_info(logging::tool_logger(), "Starting VSS backup thread (Snapshot id: '%1', job-owner: '%2').",
                 guid_to_string(snapshotId), to_ansi_nothrow(jobName));
        // The worker shares the task's data, not the object: destroying the object
        // is what ends the task.
        thread = std::make_unique<impl::CTaskWorker>(
            "VssSnapshotThread", shared->CloseEvent, [task = shared] { SnapshotProc(*task); }, limits.joinMs);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to starting snapshot creation thread.", e);
    }
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
    // The result is the worker's until completion has been published.
    if (!shared->operationInfo->IsCompleted() || !shared->result)
        throw exc::runtime_exc_t("Failed to create snapshot.");
    return *shared->result;
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

#include "import/vss_import_snapshot_thread.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/event.h"
#include "import/vss_import_snapshot.h"
#include "snapshot/close_wait.h"
#include "snapshot/operation_report.h"
#include "snapshot/worker_com.h"

namespace hv {

namespace {

void ImportProc(CVssImportSnapshotThread::SShared& task) {
    log_scope_t scope(logging::tool_logger(), "Entering in snapshot import procedure.");
    // A worker without COM has no verdict to give: the task stays busy until it is closed.
    impl::InitializeWorkerCom();
    std::unique_ptr<CVssImportSnapshot> snapshot;
    try {
        snapshot = std::make_unique<CVssImportSnapshot>(task.context, task.CloseEvent);
        task.result = snapshot->GetResult();
        impl::ReportSuccess(*task.operationInfo);

        log_info(logging::tool_logger(), "Waiting for backup completion");
        impl::WaitForClose(*task.CloseEvent, task.holdMs);
        scope.finish("Leaving snapshot import procedure.");
    } catch (const std::exception& e) {
        impl::ReportFailure(*task.operationInfo, e);
        throw;
    }
    // The imported shadow copies go here, in the apartment that imported them.
    snapshot.reset();
    impl::UninitializeWorkerCom();
}

} // namespace

CVssImportSnapshotThread::CVssImportSnapshotThread(const std::wstring& jobName,
                                                   const std::wstring& backupConsole, const GUID& snapshotId,
                                                   std::shared_ptr<CImportSnapshotContext> context,
                                                   const SSnapshotTaskLimits& limits) {
    try {
        shared = std::make_shared<SShared>();
        shared->operationInfo = std::make_shared<COperationInfo>(snapshotId, local_filetime_now());
        shared->snapshotId = snapshotId;
        shared->context = std::move(context);
        shared->CloseEvent = std::make_shared<win::win_manual_reset_event_t>();
        shared->jobInfo = std::make_shared<wrap::locks::CLockerJobInfo>(jobName, backupConsole);
        shared->holdMs = limits.holdMs;
        log_scope_t scope(logging::tool_logger(), "Starting snapshot import ( task '%1', job '%2').",
                          guid_to_string(snapshotId), to_ansi_nothrow(jobName));
        // The worker shares the task's data, not the object: destroying the object
        // is what ends the task.
        thread = std::make_unique<impl::CTaskWorker>(
            "VssSnapImport", shared->CloseEvent, [task = shared] { ImportProc(*task); }, limits.joinMs);
        scope.close_quietly();
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to starting snapshot import thread.", e);
    }
}

CVssImportSnapshotThread::~CVssImportSnapshotThread() {
    thread->Stop();
}

std::shared_ptr<COperationInfo> CVssImportSnapshotThread::GetOperationInfo() const {
    return shared->operationInfo;
}

std::shared_ptr<wrap::locks::CLockerJobInfo> CVssImportSnapshotThread::GetJobInfo() const {
    return shared->jobInfo;
}

std::string CVssImportSnapshotThread::ConvertOffhostPaths(const std::string& itemsXml) const {
    // The result is the worker's until completion has been published.
    if (!shared->operationInfo->IsCompleted() || !shared->result)
        throw exc::runtime_exc_t("There is no successfully imported snapshot.");
    return shared->result->ConvertOffhostPaths(itemsXml);
}

} // namespace hv

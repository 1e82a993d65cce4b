#include "import/vss_import_snapshot_thread.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "import/vss_import_snapshot.h"

namespace hv {

namespace {

// A worker without COM has no verdict to give: the task stays busy until it is closed.
const impl::STaskWorkerKind importWorker = {"VssSnapImport", "Entering in snapshot import procedure.",
                                            "Leaving snapshot import procedure.",
                                            impl::ComFailure::Unreported};

void ImportProc(CVssImportSnapshotThread::SShared& task) {
    impl::RunTaskWorker(
        task, importWorker,
        [&] {
            auto snapshot = std::make_unique<CVssImportSnapshot>(task.context, task.CloseEvent);
            task.result = snapshot->GetResult();
            return snapshot;
        },
        [](CVssImportSnapshot&) {});
}

} // namespace

CVssImportSnapshotThread::CVssImportSnapshotThread(const std::wstring& jobName,
                                                   const std::wstring& backupConsole, const GUID& snapshotId,
                                                   std::shared_ptr<CImportSnapshotContext> context,
                                                   const SSnapshotTaskLimits& limits) {
    exc::traced("Failed to starting snapshot import thread.", [&] {
        shared =
            std::make_shared<SShared>(impl::STaskIdentity{jobName, backupConsole, snapshotId}, limits.holdMs);
        shared->context = std::move(context);
        log_scope_t scope(logging::tool_logger(), "Starting snapshot import ( task '%1', job '%2').",
                          guid_to_string(snapshotId), to_ansi_nothrow(jobName));
        thread = impl::StartTaskWorker(importWorker, shared, ImportProc, limits.joinMs);
        scope.close_quietly();
    });
}

CVssImportSnapshotThread::~CVssImportSnapshotThread() {
    thread->Stop();
}

std::shared_ptr<COperationInfo> CVssImportSnapshotThread::GetOperationInfo() {
    return shared->operationInfo;
}

std::shared_ptr<wrap::locks::CLockerJobInfo> CVssImportSnapshotThread::GetJobInfo() {
    return shared->jobInfo;
}

std::string CVssImportSnapshotThread::ConvertOffhostPaths(const std::string& itemsXml) {
    return impl::RequireCompleted(*shared, shared->result, "There is no successfully imported snapshot.")
        .ConvertOffhostPaths(itemsXml);
}

} // namespace hv

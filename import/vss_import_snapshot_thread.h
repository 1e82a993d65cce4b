// An off-host import task: a proxy takes over the transportable snapshot that a
// host task made, keeps it until the server has read it, and converts the host's
// paths for the server meanwhile. The import runs on a worker of its own;
// destroying the object closes the task.
#pragma once

#include "compat/win_types.h"
#include "import/import_snapshot_context.h"
#include "import/import_snapshot_result.h"
#include "snapshot/locker_job_info.h"
#include "snapshot/operation_info.h"
#include "snapshot/task_worker.h"
#include "snapshot/vss_snapshot_thread.h"

#include <memory>
#include <string>

namespace win {
class win_manual_reset_event_t;
}

namespace hv {

class CVssImportSnapshotThread {
public:
    // Starts the worker and returns at once.
    CVssImportSnapshotThread(const std::wstring& jobName, const std::wstring& backupConsole,
                             const GUID& snapshotId, std::shared_ptr<CImportSnapshotContext> context,
                             const SSnapshotTaskLimits& limits = SSnapshotTaskLimits());
    // Signals the worker and waits for it, within the join limit.
    ~CVssImportSnapshotThread();
    CVssImportSnapshotThread(const CVssImportSnapshotThread&) = delete;
    CVssImportSnapshotThread& operator=(const CVssImportSnapshotThread&) = delete;

    // The record as the worker left it: a worker that vanished without a verdict
    // leaves the task looking busy.
    std::shared_ptr<COperationInfo> GetOperationInfo() const;
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() const;
    // Throws "There is no successfully imported snapshot." until the import stands.
    // Still answers after the snapshot's release, with paths that lead nowhere then.
    std::string ConvertOffhostPaths(const std::string& itemsXml) const;

    // What the worker shares with the dispatcher; kept alive by both, so that a
    // worker that outlives the join still has it.
    struct SShared {
        std::shared_ptr<COperationInfo> operationInfo;
        GUID snapshotId = GUID_NULL;
        std::shared_ptr<CImportSnapshotContext> context;
        std::shared_ptr<wrap::locks::CLockerJobInfo> jobInfo;
        // Set by the worker before it publishes completion.
        std::shared_ptr<CVssImportSnapshotResult> result;
        std::shared_ptr<win::win_manual_reset_event_t> CloseEvent;
        DWORD holdMs = impl::HoldLimitMs;
    };

private:
    std::shared_ptr<SShared> shared;
    std::unique_ptr<impl::CTaskWorker> thread;
};

} // namespace hv

// An off-host import task: a proxy takes over the transportable snapshot that a
// host task made, keeps it until the server has read it, and converts the host's
// paths for the server meanwhile. The import runs on a worker of its own;
// destroying the object closes the task.
#pragma once

#include "compat/win_types.h"
#include "import/import_snapshot_context.h"
#include "import/import_snapshot_result.h"
#include "import/import_task.h"
#include "snapshot/task_core.h"

#include <memory>
#include <string>

namespace hv {

class CVssImportSnapshotThread final : public IImportTask {
public:
    // Starts the worker and returns at once.
    CVssImportSnapshotThread(const std::wstring& jobName, const std::wstring& backupConsole,
                             const GUID& snapshotId, std::shared_ptr<CImportSnapshotContext> context,
                             const SSnapshotTaskLimits& limits = SSnapshotTaskLimits());
    // Signals the worker and waits for it, within the join limit.
    ~CVssImportSnapshotThread() override;
    CVssImportSnapshotThread(const CVssImportSnapshotThread&) = delete;
    CVssImportSnapshotThread& operator=(const CVssImportSnapshotThread&) = delete;

    // The record as the worker left it: a worker that vanished without a verdict
    // leaves the task looking busy.
    std::shared_ptr<COperationInfo> GetOperationInfo() override;
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override;
    // Still answers after the snapshot's release, with paths that lead nowhere then.
    std::string ConvertOffhostPaths(const std::string& itemsXml) override;

    struct SShared : impl::STaskRecord {
        using STaskRecord::STaskRecord;
        std::shared_ptr<CImportSnapshotContext> context;
        // Set by the worker before it publishes completion.
        std::shared_ptr<CVssImportSnapshotResult> result;
    };

private:
    std::shared_ptr<SShared> shared;
    std::unique_ptr<impl::CTaskWorker> thread;
};

} // namespace hv

// A snapshot task: one VSS snapshot of Hyper-V VMs from creation to release, on
// a worker of its own. The worker creates the snapshot, holds it until the task
// is closed, then hands the VMs' outcomes to the writer, completes the backup and
// releases the snapshot. Destroying the object closes the task.
#pragma once

#include "compat/win_types.h"
#include "snapshot/snapshot_info.h"
#include "snapshot/snapshot_result.h"
#include "snapshot/snapshot_task.h"
#include "snapshot/task_core.h"

#include <map>
#include <memory>
#include <string>

class CHvBackupSpec;

class CVssSnapshotThread2 final : public impl::ISnapshotTask {
public:
    // Starts the worker and returns at once.
    CVssSnapshotThread2(const std::wstring& jobName, const std::wstring& backupConsole,
                        const GUID& snapshotId, std::shared_ptr<CHvBackupSpec> specification,
                        const SSnapshotTaskLimits& limits = SSnapshotTaskLimits());
    // Closes the task: signals the worker and waits for it, within the join limit.
    ~CVssSnapshotThread2() override;
    CVssSnapshotThread2(const CVssSnapshotThread2&) = delete;
    CVssSnapshotThread2& operator=(const CVssSnapshotThread2&) = delete;

    // A worker that ended without a verdict is given a failed one here.
    std::shared_ptr<COperationInfo> GetOperationInfo() override;
    std::shared_ptr<impl::CSnapshotInfo> GetCreatedInfo() override;
    std::string GetVmFiles(const GUID& vmId) override;
    void SetVmCompletion(const GUID& vmId, bool succeeded) override;
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override;

    struct SShared : impl::STaskRecord {
        using STaskRecord::STaskRecord;
        std::shared_ptr<CHvBackupSpec> specification;
        // Set by the worker before it publishes completion.
        std::shared_ptr<CVssSnapshotResult> result;
        // Written by the dispatcher while the snapshot is held, read by the worker
        // once the close event is set.
        std::map<GUID, bool, VSSUtils::VssIdLess> VmCompletions;
    };

private:
    const CVssSnapshotResult& RequireResult() const;

    std::shared_ptr<SShared> shared;
    std::unique_ptr<impl::CTaskWorker> thread;
};

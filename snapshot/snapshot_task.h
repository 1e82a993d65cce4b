// What the task holder asks of a snapshot task on the host. The task runs on a
// worker of its own from construction on; every operation here returns at once.
// Dropping the last reference ends the task: it signals the worker and joins it.
#pragma once

#include "compat/win_types.h"
#include "snapshot/locker_job_info.h"
#include "snapshot/operation_info.h"
#include "snapshot/snapshot_info.h"

#include <memory>
#include <string>

class CHvBackupSpec;

namespace impl {

class ISnapshotTask {
public:
    virtual ~ISnapshotTask() = default;

    virtual std::shared_ptr<COperationInfo> GetOperationInfo() = 0;
    // Both throw "Failed to create snapshot." while the task has no result.
    virtual std::shared_ptr<impl::CSnapshotInfo> GetCreatedInfo() = 0;
    // The items list as UTF-8.
    virtual std::string GetVmFiles(const GUID& vmId) = 0;
    // Only records the verdict; the writer hears of it when the task is closed.
    virtual void SetVmCompletion(const GUID& vmId, bool succeeded) = 0;
    virtual std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() = 0;
};

} // namespace impl

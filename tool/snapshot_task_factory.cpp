// The tool's snapshot task is the worker of the snapshot library, seen through
// the holder's interface.
#include "tool/snapshot_task.h"

#include "snapshot/vss_snapshot_thread.h"

namespace {

class CSnapshotTask final : public ISnapshotTask {
public:
    CSnapshotTask(const impl::STaskIdentity& identity, const std::shared_ptr<CHvBackupSpec>& spec)
        : task(identity.jobName, identity.backupConsole, identity.snapshotId, spec) {}

    std::shared_ptr<COperationInfo> GetOperationInfo() override { return task.GetOperationInfo(); }
    std::shared_ptr<impl::CSnapshotInfo> GetCreatedInfo() override { return task.GetCreatedInfo(); }
    std::string GetVmFiles(const GUID& vmId) override { return task.GetVmFiles(vmId); }
    void SetVmCompletion(const GUID& vmId, bool succeeded) override { task.SetVmCompletion(vmId, succeeded); }
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override { return task.GetJobInfo(); }

private:
    CVssSnapshotThread2 task;
};

} // namespace

std::shared_ptr<ISnapshotTask> CreateSnapshotTask(const impl::STaskIdentity& identity,
                                                  const std::shared_ptr<CHvBackupSpec>& spec) {
    return std::make_shared<CSnapshotTask>(identity, spec);
}

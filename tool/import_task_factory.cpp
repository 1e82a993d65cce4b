// The tool's import task is the worker of the import library, seen through the
// holder's interface.
#include "tool/import_task.h"

#include "import/vss_import_snapshot_thread.h"

namespace {

class CImportTask final : public IImportTask {
public:
    CImportTask(const impl::STaskIdentity& identity,
                const std::shared_ptr<hv::CImportSnapshotContext>& context)
        : task(identity.jobName, identity.backupConsole, identity.snapshotId, context) {}

    std::shared_ptr<COperationInfo> GetOperationInfo() override { return task.GetOperationInfo(); }
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override { return task.GetJobInfo(); }
    std::string ConvertOffhostPaths(const std::string& itemsXml) override {
        return task.ConvertOffhostPaths(itemsXml);
    }

private:
    hv::CVssImportSnapshotThread task;
};

} // namespace

std::shared_ptr<IImportTask> CreateImportTask(const impl::STaskIdentity& identity,
                                              const std::shared_ptr<hv::CImportSnapshotContext>& context) {
    return std::make_shared<CImportTask>(identity, context);
}

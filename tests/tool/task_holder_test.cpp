#include "tool/snapshot_task_holder.h"

#include "common/exc/exc.h"
#include "spec/hv_backup_spec.h"

#include <gtest/gtest.h>

namespace {

// One fake serves both slots; what a slot's commands answer is the roads' through the tool. Its
// making and its release go to a journal that outlives it.
class FakeTask : public impl::ISnapshotTask, public hv::IImportTask {
public:
    FakeTask(const impl::STaskIdentity& task, std::vector<std::wstring>& journal, const std::wstring& made)
        : identity(task), events(journal) {
        events.push_back(L"made " + task.jobName + made);
    }
    ~FakeTask() override { events.push_back(L"released " + identity.jobName); }

    std::shared_ptr<COperationInfo> GetOperationInfo() override {
        return std::make_shared<COperationInfo>(identity.snapshotId, 0);
    }
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override {
        return std::make_shared<wrap::locks::CLockerJobInfo>(identity.jobName, L"console");
    }
    std::shared_ptr<impl::CSnapshotInfo> GetCreatedInfo() override { return nullptr; }
    std::string GetVmFiles(const GUID&) override { return {}; }
    void SetVmCompletion(const GUID&, bool) override {}
    std::string ConvertOffhostPaths(const std::string&) override { return {}; }

private:
    impl::STaskIdentity identity;
    std::vector<std::wstring>& events;
};

class TaskHolderTest : public ::testing::Test {
protected:
    TaskHolderTest()
        : holder(
              [this](const impl::STaskIdentity& task, const std::shared_ptr<CHvBackupSpec>& spec) {
                  return std::make_shared<FakeTask>(task, events,
                                                    L" with VMs: " + std::to_wstring(spec->vms.size()));
              },
              [this](const impl::STaskIdentity& task, const std::shared_ptr<hv::CImportSnapshotContext>&) {
                  return std::make_shared<FakeTask>(task, events, L"");
              }) {}

    GUID BeginSnapshot(const std::wstring& job) {
        return holder.BeginSnapshotCreation(L"<HVBackupSpec><VMs><VM id=\"vm-1\"/></VMs></HVBackupSpec>", job,
                                            L"C");
    }

    std::vector<std::wstring> events;
    CSnapshotTaskHolder holder;
};

} // namespace

TEST_F(TaskHolderTest, BeginHandsTheSpecAndAFreshIdToANewTaskAndABrokenSpecLeavesTheRunningOneAlone) {
    const GUID first = BeginSnapshot(L"first");
    EXPECT_NE(first, GUID_NULL);
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, first);
    const GUID second = BeginSnapshot(L"second");
    EXPECT_NE(second, first);
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, second);

    EXPECT_THROW(holder.BeginSnapshotCreation(L"<HVBackupSpec>", L"J", L"C"), exc::exc_base_t);
    EXPECT_EQ(events, (std::vector<std::wstring>{L"made first with VMs: 1", L"made second with VMs: 1",
                                                 L"released first"}));
}

TEST_F(TaskHolderTest, SnapshotSlotWinsStatusAndJobInfoAndIsReleasedFirst) {
    const GUID import = holder.BeginSnapshotImport(
        std::make_shared<hv::CImportSnapshotContext>(L"<doc/>", L"<ids/>"), L"import", L"C");
    const GUID snapshot = BeginSnapshot(L"snapshot");
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, snapshot);
    EXPECT_EQ(holder.GetLockerJobInfo()->jobName, L"snapshot");

    holder.CloseSnapshot();
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, import);
    EXPECT_EQ(holder.GetLockerJobInfo()->jobName, L"import");

    BeginSnapshot(L"again");
    EXPECT_TRUE(holder.ClearResources());
    EXPECT_EQ(holder.GetLockerJobInfo()->jobName, L"import");
    EXPECT_TRUE(holder.ClearResources());
    EXPECT_THROW(holder.GetAsyncOpStatus(), exc::exc_base_t);
    // Nothing left: closing answers like a success, and so does clearing.
    EXPECT_NO_THROW(holder.CloseSnapshot());
    EXPECT_TRUE(holder.ClearResources());
    EXPECT_EQ(events,
              (std::vector<std::wstring>{L"made import", L"made snapshot with VMs: 1", L"released snapshot",
                                         L"made again with VMs: 1", L"released again", L"released import"}));
}

#include "tool/snapshot_task_holder.h"

#include "common/exc/exc.h"
#include "spec/hv_backup_spec.h"

#include <gtest/gtest.h>

#include <list>

namespace {

const std::wstring validSpec = L"<HVBackupSpec><VMs><VM id=\"vm-1\"/></VMs></HVBackupSpec>";

// What a fake task was made with and what happened to it; outlives the task.
struct TaskRecord {
    std::wstring jobName;
    GUID id{};
    std::shared_ptr<CHvBackupSpec> spec;
    bool alive = true;
};

// One fake serves both slots; what a slot's commands answer is the roads' through the tool.
class FakeTask : public impl::ISnapshotTask, public hv::IImportTask {
public:
    explicit FakeTask(TaskRecord& made) : record(made) {}
    ~FakeTask() override { record.alive = false; }

    std::shared_ptr<COperationInfo> GetOperationInfo() override {
        return std::make_shared<COperationInfo>(record.id, 0);
    }
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override {
        return std::make_shared<wrap::locks::CLockerJobInfo>(record.jobName, L"console");
    }
    std::shared_ptr<impl::CSnapshotInfo> GetCreatedInfo() override { return nullptr; }
    std::string GetVmFiles(const GUID&) override { return {}; }
    void SetVmCompletion(const GUID&, bool) override {}
    std::string ConvertOffhostPaths(const std::string&) override { return {}; }

private:
    TaskRecord& record;
};

class TaskHolderTest : public ::testing::Test {
protected:
    TaskHolderTest()
        : holder(
              [this](const impl::STaskIdentity& task, const std::shared_ptr<CHvBackupSpec>& spec) {
                  return std::make_shared<FakeTask>(
                      snapshots.emplace_back(TaskRecord{task.jobName, task.snapshotId, spec, true}));
              },
              [this](const impl::STaskIdentity& task, const std::shared_ptr<hv::CImportSnapshotContext>&) {
                  return std::make_shared<FakeTask>(
                      imports.emplace_back(TaskRecord{task.jobName, task.snapshotId, nullptr, true}));
              }) {}

    GUID BeginSnapshot() { return holder.BeginSnapshotCreation(validSpec, L"SnapshotJob", L"C"); }
    GUID BeginImport() {
        return holder.BeginSnapshotImport(std::make_shared<hv::CImportSnapshotContext>(L"<doc/>", L"<ids/>"),
                                          L"ImportJob", L"C");
    }

    std::list<TaskRecord> snapshots;
    std::list<TaskRecord> imports;
    CSnapshotTaskHolder holder;
};

} // namespace

TEST_F(TaskHolderTest, BeginHandsTheSpecAndAFreshIdToANewTaskAndABrokenSpecLeavesTheRunningOneAlone) {
    const GUID first = BeginSnapshot();
    ASSERT_EQ(snapshots.size(), 1u);
    EXPECT_EQ(snapshots.front().id, first);
    ASSERT_TRUE(snapshots.front().spec);
    EXPECT_EQ(snapshots.front().spec->vms.size(), 1u);
    EXPECT_NE(first, GUID_NULL);
    // A second begin replaces the running task and releases it.
    EXPECT_NE(BeginSnapshot(), first);
    EXPECT_FALSE(snapshots.front().alive);
    EXPECT_TRUE(snapshots.back().alive);
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, snapshots.back().id);

    EXPECT_THROW(holder.BeginSnapshotCreation(L"<HVBackupSpec>", L"J", L"C"), exc::exc_base_t);
    EXPECT_EQ(snapshots.size(), 2u);
    EXPECT_TRUE(snapshots.back().alive);
}

TEST_F(TaskHolderTest, SnapshotSlotWinsStatusAndJobInfoAndIsReleasedFirst) {
    BeginImport();
    BeginSnapshot();
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, snapshots.front().id);
    EXPECT_EQ(holder.GetLockerJobInfo()->jobName, L"SnapshotJob");

    holder.CloseSnapshot();
    EXPECT_FALSE(snapshots.front().alive);
    EXPECT_TRUE(imports.front().alive);
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, imports.front().id);
    EXPECT_EQ(holder.GetLockerJobInfo()->jobName, L"ImportJob");

    BeginSnapshot();
    EXPECT_TRUE(holder.ClearResources());
    EXPECT_FALSE(snapshots.back().alive);
    EXPECT_TRUE(imports.front().alive);
    EXPECT_TRUE(holder.ClearResources());
    EXPECT_FALSE(imports.front().alive);
    // Nothing left: closing answers like a success, and so does clearing.
    EXPECT_NO_THROW(holder.CloseSnapshot());
    EXPECT_TRUE(holder.ClearResources());
}

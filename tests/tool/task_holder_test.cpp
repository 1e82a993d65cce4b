#include "tool/snapshot_task_holder.h"

#include "common/exc/exc.h"
#include "spec/hv_backup_spec.h"

#include <gtest/gtest.h>

#include <functional>
#include <list>

namespace {

const std::wstring validSpec = L"<HVBackupSpec><VMs><VM id=\"vm-1\"/></VMs></HVBackupSpec>";
const GUID someVm = {0x11223344, 0x5566, 0x7788, {0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff, 0x00}};

// What a fake task was made with and what happened to it; outlives the task.
struct TaskRecord {
    std::wstring jobName;
    GUID id{};
    std::shared_ptr<CHvBackupSpec> spec;
    bool alive = true;
    std::vector<bool> completions;
};

// One fake serves both slots: it answers like a task that has no result yet.
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
    std::shared_ptr<impl::CSnapshotInfo> GetCreatedInfo() override {
        throw exc::runtime_exc_t("Failed to create snapshot.");
    }
    std::string GetVmFiles(const GUID&) override { throw exc::runtime_exc_t("Failed to create snapshot."); }
    void SetVmCompletion(const GUID&, bool succeeded) override { record.completions.push_back(succeeded); }
    std::string ConvertOffhostPaths(const std::string& itemsXml) override { return "converted:" + itemsXml; }

private:
    TaskRecord& record;
};

class TaskHolderTest : public ::testing::Test {
protected:
    TaskHolderTest()
        : holder(
              [this](const impl::STaskIdentity& task, const std::shared_ptr<CHvBackupSpec>& spec) {
                  return std::make_shared<FakeTask>(
                      snapshots.emplace_back(TaskRecord{task.jobName, task.snapshotId, spec, true, {}}));
              },
              [this](const impl::STaskIdentity& task, const std::shared_ptr<hv::CImportSnapshotContext>&) {
                  return std::make_shared<FakeTask>(
                      imports.emplace_back(TaskRecord{task.jobName, task.snapshotId, nullptr, true, {}}));
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

std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no failure";
}

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

TEST_F(TaskHolderTest, EachSlotAnswersOnlyItsOwnCommandsAndTheTasksFailuresGetTheCommandsLine) {
    BeginImport();
    EXPECT_EQ(holder.ConvertOffhostPaths("<FilesList/>"), "converted:<FilesList/>");
    EXPECT_EQ(FailureOf([&] { holder.GetSnapshotInfo(); }),
              "Snapshot is not initialized.\n--tr:Failed to get snapshot info.");
    EXPECT_THROW(holder.SetVmBackupStatus(someVm, false), exc::exc_base_t);

    holder.CloseSnapshot();
    BeginSnapshot();
    EXPECT_EQ(
        FailureOf([&] { holder.ConvertOffhostPaths("<FilesList/>"); }),
        "Snapshot is not initialized.\n--tr:Failed to convert source paths to off-host shadow paths. Given "
        "specification: '<FilesList/>'.");
    // The snapshot task's failures get the command's line; its statuses pass through.
    EXPECT_EQ(FailureOf([&] { holder.GetVMFilesList(someVm); }),
              "Failed to create snapshot.\n--tr:Failed to get file list of vm.");
    holder.SetVmBackupStatus(someVm, false);
    holder.SetVmBackupStatus(someVm, true);
    EXPECT_EQ(snapshots.front().completions, (std::vector<bool>{false, true}));
}

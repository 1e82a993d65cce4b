#include "tool/snapshot_task_holder.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "spec/hv_backup_spec.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <vector>

namespace {

const std::wstring validSpec = L"<HVBackupSpec><VMs><VM id=\"vm-1\"/></VMs></HVBackupSpec>";

struct TaskRecord {
    std::wstring jobName;
    std::wstring backupConsole;
    GUID id{};
    std::shared_ptr<CHvBackupSpec> spec;
    std::shared_ptr<hv::CImportSnapshotContext> context;
    bool alive = true;
    std::map<std::wstring, bool> completions;
};

class FakeSnapshotTask : public ISnapshotTask {
public:
    explicit FakeSnapshotTask(TaskRecord& record)
        : record(record), info(std::make_shared<COperationInfo>(record.id, 1)),
          job(std::make_shared<wrap::locks::CLockerJobInfo>(record.jobName, record.backupConsole)) {}
    ~FakeSnapshotTask() override { record.alive = false; }

    std::shared_ptr<COperationInfo> GetOperationInfo() override { return info; }
    std::shared_ptr<impl::CSnapshotInfo> GetCreatedInfo() override {
        throw exc::runtime_exc_t("Failed to create snapshot.");
    }
    std::wstring GetVmFiles(const GUID&) override { throw exc::runtime_exc_t("Failed to create snapshot."); }
    void SetVmCompletion(const GUID& vmId, bool succeeded) override {
        record.completions[guid_to_wstring(vmId)] = succeeded;
    }
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override { return job; }

    TaskRecord& record;
    std::shared_ptr<COperationInfo> info;
    std::shared_ptr<wrap::locks::CLockerJobInfo> job;
};

class FakeImportTask : public IImportTask {
public:
    explicit FakeImportTask(TaskRecord& record)
        : record(record), info(std::make_shared<COperationInfo>(record.id, 2)),
          job(std::make_shared<wrap::locks::CLockerJobInfo>(record.jobName, record.backupConsole)) {}
    ~FakeImportTask() override { record.alive = false; }

    std::shared_ptr<COperationInfo> GetOperationInfo() override { return info; }
    std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() override { return job; }
    std::wstring ConvertOffhostPaths(const std::wstring& itemsXml) override {
        return L"converted:" + itemsXml;
    }

    TaskRecord& record;
    std::shared_ptr<COperationInfo> info;
    std::shared_ptr<wrap::locks::CLockerJobInfo> job;
};

// A holder whose factories make fakes and keep a record of every task made.
class TaskHolderTest : public ::testing::Test {
protected:
    TaskHolderTest()
        : holder(
              [this](const std::wstring& job, const std::wstring& console, const GUID& id,
                     const std::shared_ptr<CHvBackupSpec>& spec) -> std::shared_ptr<ISnapshotTask> {
                  auto& record = *snapshots.emplace_back(std::make_unique<TaskRecord>());
                  record = TaskRecord{job, console, id, spec, nullptr, true, {}};
                  return std::make_shared<FakeSnapshotTask>(record);
              },
              [this](const std::wstring& job, const std::wstring& console, const GUID& id,
                     const std::shared_ptr<hv::CImportSnapshotContext>& context)
                  -> std::shared_ptr<IImportTask> {
                  auto& record = *imports.emplace_back(std::make_unique<TaskRecord>());
                  record = TaskRecord{job, console, id, nullptr, context, true, {}};
                  return std::make_shared<FakeImportTask>(record);
              }) {}

    GUID BeginSnapshot() { return holder.BeginSnapshotCreation(validSpec, L"Job", L"Console"); }
    GUID BeginImport() {
        return holder.BeginSnapshotImport(std::make_shared<hv::CImportSnapshotContext>(L"<doc/>", L"<ids/>"),
                                          L"ImportJob", L"ImportConsole");
    }

    std::vector<std::unique_ptr<TaskRecord>> snapshots;
    std::vector<std::unique_ptr<TaskRecord>> imports;
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

const GUID someVm = {0x11223344, 0x5566, 0x7788, {0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff, 0x00}};

} // namespace

TEST_F(TaskHolderTest, QueriesWithoutTaskFailWithTheCommandsOwnLineBehindTheCause) {
    const std::string cause = "Snapshot is not initialized.\n--tr:";
    EXPECT_EQ(FailureOf([&] { holder.GetAsyncOpStatus(); }), cause + "Failed to get operation info.");
    EXPECT_EQ(FailureOf([&] { holder.GetLockerJobInfo(); }), cause + "Failed to get operation info.");
    EXPECT_EQ(FailureOf([&] { holder.GetSnapshotInfo(); }), cause + "Failed to get snapshot info.");
    EXPECT_EQ(FailureOf([&] { holder.GetVMFilesList(someVm); }), cause + "Failed to get file list of vm.");
    EXPECT_EQ(FailureOf([&] { holder.SetVmBackupStatus(someVm, true); }),
              cause + "Failed to complete VM backup. VmID: '{11223344-5566-7788-99aa-bbccddeeff00}'.");
    EXPECT_EQ(FailureOf([&] { holder.ConvertOffhostPaths(L"<FilesList/>"); }),
              cause + "Failed to convert source paths to off-host shadow paths. Given specification: "
                      "'<FilesList/>'.");
}

TEST_F(TaskHolderTest, ClosingWithNothingOpenAnswersAsSuccess) {
    EXPECT_NO_THROW(holder.CloseSnapshot());
    EXPECT_TRUE(holder.ClearResources());
}

TEST_F(TaskHolderTest, BeginHandsJobConsoleParsedSpecAndFreshIdToTheTask) {
    const GUID first = BeginSnapshot();
    ASSERT_EQ(snapshots.size(), 1u);
    EXPECT_EQ(snapshots[0]->jobName, L"Job");
    EXPECT_EQ(snapshots[0]->backupConsole, L"Console");
    EXPECT_EQ(snapshots[0]->id, first);
    ASSERT_TRUE(snapshots[0]->spec);
    ASSERT_EQ(snapshots[0]->spec->vms.size(), 1u);

    const GUID second = BeginSnapshot();
    EXPECT_NE(first, second);
    EXPECT_NE(first, GUID_NULL);
}

TEST_F(TaskHolderTest, SecondBeginReplacesAndReleasesTheRunningTask) {
    BeginSnapshot();
    BeginSnapshot();
    EXPECT_FALSE(snapshots[0]->alive);
    EXPECT_TRUE(snapshots[1]->alive);
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, snapshots[1]->id);
}

TEST_F(TaskHolderTest, BrokenSpecFailsTheCommandAndLeavesTheRunningTaskAlone) {
    BeginSnapshot();
    const std::string failure =
        FailureOf([&] { holder.BeginSnapshotCreation(L"<HVBackupSpec>", L"J", L"C"); });
    EXPECT_NE(failure.find("Cannot parse backup specification document"), std::string::npos) << failure;
    EXPECT_TRUE(failure.ends_with("\n--tr:Failed to create snapshot task. Job: 'J'. Backup console: 'C'."))
        << failure;
    EXPECT_EQ(snapshots.size(), 1u);
    EXPECT_TRUE(snapshots[0]->alive);
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, snapshots[0]->id);
}

TEST_F(TaskHolderTest, SnapshotSlotWinsStatusAndJobInfoAndIsClosedFirst) {
    BeginImport();
    BeginSnapshot();
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, snapshots[0]->id);
    EXPECT_EQ(holder.GetLockerJobInfo()->jobName, L"Job");

    holder.CloseSnapshot();
    EXPECT_FALSE(snapshots[0]->alive);
    EXPECT_TRUE(imports[0]->alive);
    EXPECT_EQ(holder.GetAsyncOpStatus()->snapshotId, imports[0]->id);
    EXPECT_EQ(holder.GetLockerJobInfo()->backupConsole, L"ImportConsole");

    holder.CloseSnapshot();
    EXPECT_FALSE(imports[0]->alive);
}

TEST_F(TaskHolderTest, ClearingReleasesOneTaskPerCallSnapshotFirst) {
    BeginSnapshot();
    BeginImport();
    EXPECT_TRUE(holder.ClearResources());
    EXPECT_FALSE(snapshots[0]->alive);
    EXPECT_TRUE(imports[0]->alive);
    EXPECT_TRUE(holder.ClearResources());
    EXPECT_FALSE(imports[0]->alive);
}

TEST_F(TaskHolderTest, EachSlotAnswersOnlyItsOwnCommands) {
    BeginImport();
    EXPECT_EQ(imports[0]->context->backupDocument, L"<doc/>");
    EXPECT_EQ(holder.ConvertOffhostPaths(L"<FilesList/>"), L"converted:<FilesList/>");
    EXPECT_EQ(FailureOf([&] { holder.GetSnapshotInfo(); }),
              "Snapshot is not initialized.\n--tr:Failed to get snapshot info.");
    EXPECT_THROW(holder.SetVmBackupStatus(someVm, false), exc::exc_base_t);

    BeginSnapshot();
    holder.CloseSnapshot();
    holder.CloseSnapshot();
    BeginSnapshot();
    EXPECT_THROW(holder.ConvertOffhostPaths(L"<FilesList/>"), exc::exc_base_t);
}

TEST_F(TaskHolderTest, TaskFailuresGetTheCommandsLine) {
    BeginSnapshot();
    EXPECT_EQ(FailureOf([&] { holder.GetVMFilesList(someVm); }),
              "Failed to create snapshot.\n--tr:Failed to get file list of vm.");
    EXPECT_EQ(FailureOf([&] { holder.GetSnapshotInfo(); }),
              "Failed to create snapshot.\n--tr:Failed to get snapshot info.");
}

TEST_F(TaskHolderTest, VmStatusIsRecordedForAnyVmWithTheLastValueKept) {
    BeginSnapshot();
    holder.SetVmBackupStatus(someVm, false);
    holder.SetVmBackupStatus(someVm, true);
    ASSERT_EQ(snapshots[0]->completions.size(), 1u);
    EXPECT_TRUE(snapshots[0]->completions.begin()->second);
}

TEST(TaskHolderWithoutTasks, BeginReportsThatTheTaskIsNotAvailableAfterParsing) {
    CSnapshotTaskHolder holder;
    EXPECT_EQ(FailureOf([&] { holder.BeginSnapshotCreation(validSpec, L"J", L"C"); }),
              "Snapshot task is not available in this build.\n"
              "--tr:Failed to create snapshot task. Job: 'J'. Backup console: 'C'.");
    EXPECT_EQ(FailureOf([&] {
                  holder.BeginSnapshotImport(std::make_shared<hv::CImportSnapshotContext>(L"", L""), L"J",
                                             L"C");
              }),
              "Snapshot import task is not available in this build.\n"
              "--tr:Failed to import off-host snapshot. Job: 'J'. Backup console: 'C'.");
    EXPECT_EQ(FailureOf([&] { holder.GetAsyncOpStatus(); }),
              "Snapshot is not initialized.\n--tr:Failed to get operation info.");
}

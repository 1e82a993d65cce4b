// The import task as the dispatcher holds it: the worker imports, publishes its
// verdict, holds the imported snapshot until the task is closed (or for its hold
// limit), and its paths outlive the snapshot.
#include "import/vss_import_snapshot_thread.h"
#include "import_test_support.h"

#include "common/format/format.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace import_test;

namespace {

const GUID taskId = {0x1d000000, 0x0000, 0x4000, {0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01}};

std::unique_ptr<hv::CVssImportSnapshotThread> StartTask(const host_snapshot_t& taken,
                                                        const SSnapshotTaskLimits& limits = {}) {
    return std::make_unique<hv::CVssImportSnapshotThread>(
        L"Nightly", L"Console", taskId,
        std::make_shared<hv::CImportSnapshotContext>(taken.backupDoc, taken.snapshotsXml), limits);
}

template <typename Condition> bool Eventually(Condition condition) {
    for (int polls = 0; polls < 6000; ++polls) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

impl::SOperationStatus WaitForVerdict(hv::CVssImportSnapshotThread& task) {
    Eventually([&] { return task.GetOperationInfo()->IsCompleted(); });
    return task.GetOperationInfo()->Read();
}

ItemsList Converted(hv::CVssImportSnapshotThread& task, const ItemsList& items) {
    ItemsList converted;
    DeserializeItemsListUtf8(task.ConvertOffhostPaths(SerializeItemsListUtf8(items)), converted);
    return converted;
}

} // namespace

TEST(ImportTask, AnswersAtOnceWhileImportingConvertsPathsFromCompletionAndHoldsTheSnapshotUntilClosed) {
    host_and_proxy_t hosts(R"(<Fault op="ImportSnapshots" delayMs="300"/>)");
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    log_capture_t log;
    auto task = StartTask(taken);

    const impl::SOperationStatus running = task->GetOperationInfo()->Read();
    EXPECT_FALSE(running.isCompleted);
    EXPECT_TRUE(running.isSucceeded);
    EXPECT_EQ(running.completedTime, 0);
    EXPECT_EQ(running.snapshotId, taskId);

    // The result is stored before completion is published: a server that asks the moment the task
    // reports completion gets its paths. Polled without a pause, so that a thread checker sees the
    // two orders meet.
    while (!task->GetOperationInfo()->IsCompleted())
        std::this_thread::yield();
    EXPECT_FALSE(Converted(*task, AllItems(taken)).empty());
    const impl::SOperationStatus done = task->GetOperationInfo()->Read();
    EXPECT_TRUE(done.isSucceeded) << to_ansi_nothrow(done.errDescription);
    EXPECT_EQ(done.errDescription, L"");
    EXPECT_NE(done.completedTime, 0);
    EXPECT_FALSE(hosts.Shadows(hosts.ProxyDir()).empty()) << "held while the task stands";

    task.reset();
    EXPECT_TRUE(hosts.Shadows(hosts.ProxyDir()).empty());
    EXPECT_TRUE(hosts.Shadows(hosts.HostDir()).empty());
    EXPECT_TRUE(
        log.has("Starting snapshot import ( task '{1d000000-0000-4000-8000-000000000001}', job 'Nightly')."))
        << log.text();
    EXPECT_TRUE(log.has("Entering in snapshot import procedure.")) << log.text();
    EXPECT_TRUE(log.has("Waiting for backup completion")) << log.text();
    EXPECT_TRUE(log.has("Leaving snapshot import procedure.")) << log.text();
}

TEST(ImportTask, SilentServerLosesTheSnapshotAfterTheHoldButStillGetsPaths) {
    host_and_proxy_t hosts;
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    SSnapshotTaskLimits limits;
    limits.holdMs = 0;
    auto task = StartTask(taken, limits);

    ASSERT_TRUE(WaitForVerdict(*task).isSucceeded);
    EXPECT_TRUE(Eventually([&] { return hosts.Shadows(hosts.ProxyDir()).empty(); }))
        << "the worker releases the snapshot by itself";
    const ItemsList converted = Converted(*task, AllItems(taken));
    ASSERT_FALSE(converted.empty());
    EXPECT_TRUE(converted[0].fullPath.starts_with(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy"));
    EXPECT_EQ(read_through(converted[0].fullPath), "") << "a path that leads nowhere any more";
}

TEST(ImportTask, WhileImportingPathsAreRefusedAndClosingCancelsTheImport) {
    host_and_proxy_t hosts(R"(<Fault op="ImportSnapshots" delayMs="600000"/>)");
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    log_capture_t log;
    auto task = StartTask(taken);
    ASSERT_TRUE(Eventually([&] { return log.has("Waiting until VSS import task finishes."); })) << log.text();
    EXPECT_FALSE(task->GetOperationInfo()->IsCompleted());
    EXPECT_EQ(failure_lines([&] { task->ConvertOffhostPaths("<FilesList/>"); }),
              std::vector<std::string>{"There is no successfully imported snapshot."});
    task.reset();
    EXPECT_TRUE(log.has("Import snapshot task has been cancelled.")) << log.text();
    EXPECT_TRUE(hosts.Shadows(hosts.ProxyDir()).empty());
}

// The import task's worker on the test's own threads: what it answers while it imports and once a
// silent server's hold has run out. Its road from begin to close is the off-host road's.
#include "import/vss_import_snapshot_thread.h"
#include "import_test_support.h"

#include "common/format/format.h"

#include <gtest/gtest.h>

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

} // namespace

TEST(ImportTask, SilentServerLosesTheSnapshotAfterTheHoldButStillGetsPaths) {
    host_and_proxy_t hosts;
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    auto task = StartTask(taken, {.holdMs = 0});

    ASSERT_TRUE(wait_for_verdict(*task).isSucceeded);
    wait_for([&] { return hosts.proxy.state_lines("shadows.txt").empty(); }); // released by the worker itself
    const ItemsList converted = Converted(*task, taken.items);
    ASSERT_FALSE(converted.empty());
    EXPECT_TRUE(converted[0].fullPath.starts_with(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy"));
    EXPECT_EQ(read_through(converted[0].fullPath), "") << "a path that leads nowhere any more";
}

TEST(ImportTask, WhileImportingPathsAreRefusedAndClosingCancelsTheImport) {
    host_and_proxy_t hosts(R"(<Fault op="ImportSnapshots" delayMs="600000"/>)");
    const host_snapshot_t taken = TakeOffhostSnapshot(hosts);
    log_capture_t log;
    auto task = StartTask(taken);
    wait_for([&] { return log.has("Waiting until VSS import task finishes."); });
    const impl::SOperationStatus running = task->GetOperationInfo()->Read();
    EXPECT_EQ(std::tuple(running.snapshotId, running.isCompleted, running.isSucceeded, running.errDescription,
                         running.completedTime),
              std::tuple(taskId, false, true, std::wstring(), std::int64_t{0}));
    EXPECT_EQ(failure_lines([&] { task->ConvertOffhostPaths("<FilesList/>"); }),
              std::vector<std::string>{"There is no successfully imported snapshot."});
    task.reset();
    EXPECT_TRUE(log.has("Import snapshot task has been cancelled.")) << log.text();
    EXPECT_TRUE(hosts.proxy.state_lines("shadows.txt").empty());
}

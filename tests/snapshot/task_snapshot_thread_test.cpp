// A task's worker on the test's own threads: what a server that never closes gets, an outcome seen
// whole, and what escapes a worker. What the task answers through the tool is the snapshot road's.
#include "snapshot_test_support.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/win/event.h"
#include "snapshot/operation_info.h"
#include "snapshot/task_core.h"
#include "snapshot/task_worker.h"
#include "snapshot/vss_snapshot_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace snapshot_test;

namespace {

const GUID threadTaskId = {0x5e1f0000, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

} // namespace

TEST(SnapshotTask, ASilentServersTaskCompletesByItselfAndKeepsItsResult) {
    hyperv_host_t host;
    CVssSnapshotThread2 task(L"Job", L"Console", threadTaskId,
                             parse_spec(spec_xml({{local_vm}}, usual_providers)), {.holdMs = 0});
    ASSERT_TRUE(wait_for_verdict(task).isSucceeded);
    wait_for([&] { return host.state_lines("shadows.txt").empty(); });

    EXPECT_EQ(host.state_lines("backups.txt").back(),
              std::string("component\t") + local_vm + "\tnot-reported");
    EXPECT_FALSE(task.GetCreatedInfo()->BackupDoc.empty());
    EXPECT_NE(task.GetVmFiles(string_to_guid(std::string(local_vm))).find("local.vhdx"), std::string::npos);
    EXPECT_TRUE(task.GetOperationInfo()->Read().isSucceeded);
}

TEST(OperationInfo, OutcomeIsSeenWholeOnceCompletionIsSeen) {
    COperationInfo info(threadTaskId, 1);
    std::thread worker([&] { info.MarkFailed(L"line one\nline two", 99); });
    impl::SOperationStatus status = info.Read();
    while (!status.isCompleted) {
        // Until completion is published the outcome fields stay at their start values.
        EXPECT_TRUE(status.isSucceeded);
        EXPECT_EQ(status.errDescription, L"");
        std::this_thread::yield();
        status = info.Read();
    }
    worker.join();
    EXPECT_EQ(std::tuple(status.isSucceeded, status.errDescription, status.completedTime),
              std::tuple(false, std::wstring(L"line one\nline two"), std::int64_t{99}));
}

TEST(TaskWorker, WhatEscapesTheBodyIsLoggedAndAWorkerThatOutlivesItsJoinKeepsItsData) {
    log_capture_t log;
    impl::CTaskWorker worker("TestWorker", std::make_shared<win::win_manual_reset_event_t>(),
                             [] { throw exc::runtime_exc_t("Body gave up."); });
    wait_for([&] { return worker.HasEnded(); });
    worker.Stop();
    EXPECT_TRUE(log.has("Body gave up.")) << log.text();
    // The joiner gives up and goes on; the worker finishes later on what its body holds.
    auto gate = std::make_shared<win::win_manual_reset_event_t>();
    auto data = std::make_shared<std::vector<int>>();
    auto done = std::make_shared<std::atomic<bool>>(false);
    {
        impl::CTaskWorker outliving(
            "TestWorker", std::make_shared<win::win_manual_reset_event_t>(),
            [gate, data, done] {
                impl::WaitForClose(*gate);
                data->assign(1000, 7);
                *done = true;
            },
            50);
        outliving.Stop();
    }
    EXPECT_TRUE(log.has("Thread failed to stop during specified timeout: [50].")) << log.text();
    EXPECT_EQ(impl::CTaskWorker::ReapAbandoned(), 1u);
    gate->set();
    wait_for([&] { return done->load(); });
    wait_for([] { return impl::CTaskWorker::ReapAbandoned() == 0; });
}

// A snapshot task as the dispatcher holds it: answers while it runs, its outcome seen whole,
// verdicts handed to the writer at close, and a worker that ends the holding by itself; what
// escapes a worker's body, and a worker that outlives its join. The hold and its end by the close
// event or by its limit are read through the snapshot and import tasks.
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

std::unique_ptr<CVssSnapshotThread2> start_task(const std::vector<spec_vm_t>& vms,
                                                const SSnapshotTaskLimits& limits = SSnapshotTaskLimits()) {
    return std::make_unique<CVssSnapshotThread2>(L"Job", L"Console", threadTaskId,
                                                 parse_spec(spec_xml(vms, usual_providers)), limits);
}

void wait_for(const std::function<bool()>& condition) {
    while (!condition())
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

impl::SOperationStatus wait_for_verdict(CVssSnapshotThread2& task) {
    wait_for([&] { return task.GetOperationInfo()->IsCompleted(); });
    return task.GetOperationInfo()->Read();
}

} // namespace

TEST(SnapshotTask, WhileCreatingItAnswersAtOnceAndClosingCancelsTheCreation) {
    hyperv_host_t host(R"(<Fault op="PrepareForBackup" delayMs="600000"/>)");
    auto task = start_task(three_vms());
    const impl::SOperationStatus status = task->GetOperationInfo()->Read();
    EXPECT_FALSE(status.isCompleted);
    EXPECT_TRUE(status.isSucceeded);
    EXPECT_EQ(status.snapshotId, threadTaskId);
    EXPECT_EQ(failure_lines([&] { task->GetCreatedInfo(); }),
              std::vector<std::string>{"Failed to create snapshot."});
    EXPECT_EQ(failure_lines([&] { task->GetVmFiles(string_to_guid(std::string(local_vm))); }),
              std::vector<std::string>{"Failed to create snapshot."});

    task.reset();
    EXPECT_EQ(host.count("DoSnapshotSet"), 0u);
    EXPECT_TRUE(host.is_clean());
}

TEST(SnapshotTask, VerdictsReachTheWriterAtCloseInIdOrderTheLastReportWinning) {
    hyperv_host_t host;
    auto task = start_task(three_vms());
    ASSERT_TRUE(wait_for_verdict(*task).isSucceeded);
    task->SetVmCompletion(string_to_guid(std::string(csv_vm)), false);
    task->SetVmCompletion(string_to_guid(std::string(local_vm)), false);
    task->SetVmCompletion(string_to_guid(std::string(local_vm)), true);
    task->SetVmCompletion(string_to_guid(std::string(smb_vm)), false);
    EXPECT_EQ(host.count("SetBackupSucceeded"), 0u) << "nothing reaches the writer before the close";

    task.reset();
    const auto calls = host.calls();
    std::vector<std::string> verdicts;
    for (const auto& call : calls)
        if (call.rfind("SetBackupSucceeded", 0) == 0)
            verdicts.push_back(call);
    EXPECT_EQ(verdicts, (std::vector<std::string>{std::string("SetBackupSucceeded\t") + local_vm + "\ttrue",
                                                  std::string("SetBackupSucceeded\t") + csv_vm + "\tfalse"}))
        << "the crash-consistent VM has no component to report";
    EXPECT_EQ(host.state_lines("shadows.txt").size(), 0u);
}

TEST(SnapshotTask, ASilentServersTaskCompletesByItselfAndKeepsItsResult) {
    hyperv_host_t host;
    SSnapshotTaskLimits limits;
    limits.holdMs = 0;
    auto task = start_task({{local_vm}}, limits);
    ASSERT_TRUE(wait_for_verdict(*task).isSucceeded);
    wait_for([&] { return host.state_lines("shadows.txt").empty(); });

    EXPECT_EQ(host.state_lines("backups.txt").back(),
              std::string("component\t") + local_vm + "\tnot-reported");
    EXPECT_FALSE(task->GetCreatedInfo()->BackupDoc.empty());
    EXPECT_NE(task->GetVmFiles(string_to_guid(std::string(local_vm))).find("local.vhdx"), std::string::npos);
    EXPECT_TRUE(task->GetOperationInfo()->Read().isSucceeded);
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
    EXPECT_FALSE(status.isSucceeded);
    EXPECT_EQ(status.errDescription, L"line one\nline two");
    EXPECT_EQ(status.completedTime, 99);
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

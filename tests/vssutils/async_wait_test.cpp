// Polling waits: how they end, by VSS or by the probe, and what each ending leaves in the log.
#include "vss_test_support.h"

#include "common/win/event.h"
#include "vssutils/async_wait.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

// Any asynchronous operation that a gathered backup can start; its faults come from the host.
AsyncPtr start_operation(BackupComponentsPtr backup) {
    AsyncPtr async;
    EXPECT_EQ(backup->GatherWriterStatus(async.put()), S_OK);
    return async;
}

std::string with_fault(const std::string& attributes) {
    return sample_host_xml("<Fault op=\"GatherWriterStatus\" " + attributes + "/>");
}

bool wait(AsyncPtr async, ITestCancelCallback* probe) {
    return WaitAsyncOperation(async, probe, "Waiting in a test.", "Unknown status in a test.");
}

} // namespace

// A failing Cancel is shown, not raised: the wait is over either way.
TEST(AsyncWait, AProbeSetBeforeTheWaitCancelsWithoutASinglePoll) {
    scratch_host_t host(sample_host_xml(
        R"(<Fault op="GatherWriterStatus" delayMs="600000"/><Fault op="Cancel" hr="0x80042302"/>)"));
    auto event = std::make_shared<win::win_manual_reset_event_t>();
    event->set();
    CWinEventTestCancelCallback probe(event);
    log_capture_t log;

    EXPECT_FALSE(wait(start_operation(gathered_backup()), &probe));
    EXPECT_EQ(journal_count(host, "QueryStatus", "GatherWriterStatus"), 0u);
    EXPECT_EQ(journal_count(host, "Cancel", "GatherWriterStatus"), 1u);
    EXPECT_TRUE(log.has("Operation cancelled. VSS cancel status: [0x80042302]"));
    EXPECT_FALSE(log.has("Failed."));
}

TEST(AsyncWait, AnEventSetDuringTheWaitCancelsThePendingOperation) {
    scratch_host_t host(with_fault("delayMs=\"600000\""));
    auto event = std::make_shared<win::win_manual_reset_event_t>();
    CWinEventTestCancelCallback probe(event);
    auto async = start_operation(gathered_backup());

    // Set only once the operation has been seen pending, so that the cancel comes between polls.
    std::thread stopper([event, &host] {
        while (journal_count(host, "QueryStatus", "GatherWriterStatus") == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        event->set();
    });
    bool finished = wait(async, &probe);
    stopper.join();

    EXPECT_FALSE(finished);
    EXPECT_GE(journal_count(host, "QueryStatus", "GatherWriterStatus"), 1u);
    EXPECT_EQ(journal_count(host, "Cancel", "GatherWriterStatus"), 1u);
}

TEST(AsyncWait, WithoutAProbeOrWithTheDefaultOneOnlyVssEndsTheWait) {
    scratch_host_t host(with_fault("delayMs=\"300\""));
    CDefaultTestCancelCallback never;
    log_capture_t log;
    EXPECT_TRUE(wait(start_operation(gathered_backup()), nullptr));
    EXPECT_TRUE(WaitForAsync(start_operation(gathered_backup()), &never));
    EXPECT_GE(journal_count(host, "QueryStatus", "GatherWriterStatus"), 4u)
        << "each wait saw the pending state";
    EXPECT_EQ(journal_count(host, "Cancel"), 0u);
    EXPECT_TRUE(log.has("Waiting for completition of VSS async operation"));
    EXPECT_FALSE(log.has("Failed."));
}

TEST(AsyncWait, AnOperationCancelledByVssEndsTheWaitWithoutAnotherCancel) {
    scratch_host_t host(with_fault("status=\"0x0004230B\""));
    log_capture_t log;
    EXPECT_FALSE(wait(start_operation(gathered_backup()), nullptr));
    EXPECT_TRUE(log.has("Operation cancelled by 3-rd party"));
    EXPECT_EQ(journal_count(host, "Cancel"), 0u);
}

TEST(AsyncWait, AStatusThatIsNoneOfTheThreeFailsWithTheUnknownStatusText) {
    scratch_host_t host(with_fault("status=\"0x0\""));
    log_capture_t log;
    EXPECT_EQ(failure_lines([&] { wait(start_operation(gathered_backup()), nullptr); }),
              (std::vector<std::string>{"Unknown status in a test.", "Vss error: '0x00000000'"}));
    EXPECT_TRUE(log.has("Waiting in a test. Failed."));
}

// Writer checks after a step and the polling waits under them: which states fail, what a failed
// writer leaves in the log and the failure, how a wait ends, by VSS or by the probe, and what each
// ending leaves in the log.
#include "vss_test_support.h"

#include "common/win/event.h"
#include "vssutils/async_wait.h"
#include "vssutils/writer_status.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

std::string writer_fault(const std::string& state, const std::string& hr) {
    return sample_host_xml(
        R"(<WriterFault writer="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" at="prepare" state=")" + state +
        "\" hr=\"" + hr + "\"/>");
}

const std::string hyperv_name = "Microsoft Hyper-V VSS Writer";

// Any asynchronous operation that a gathered backup can start; its faults come from the host.
AsyncPtr start_operation(BackupComponentsPtr backup) {
    AsyncPtr async;
    EXPECT_EQ(backup->GatherWriterStatus(async.put()), S_OK);
    return async;
}

bool wait(AsyncPtr async, ITestCancelCallback* probe) {
    return WaitAsyncOperation(async, probe, "Waiting in a test.", "Unknown status in a test.");
}

} // namespace

TEST(WriterStatus, HealthyWritersAreLoggedOnlyWhenAskedForAndACancelledCheckIsNoFailure) {
    scratch_host_t host;
    auto backup = prepared_backup();
    log_capture_t quiet;
    EXPECT_TRUE(VerifyWriters(backup, nullptr, false));
    EXPECT_FALSE(quiet.has("is ok."));

    log_capture_t each;
    EXPECT_TRUE(CheckWritersStatus(backup, nullptr));
    EXPECT_TRUE(each.has("Writer '" + hyperv_name + "' is ok."));
    EXPECT_TRUE(each.has("Writer 'System Writer' is ok."));
    EXPECT_TRUE(each.has("Writers state check is succeeded."));

    // A cancelled check asks for no status, and is no failure that leaves its block open.
    const std::size_t asked = journal_count(host, "GetWriterStatusCount");
    auto event = std::make_shared<win::win_manual_reset_event_t>();
    event->set();
    CWinEventTestCancelCallback probe(event);
    log_capture_t cancelled;
    EXPECT_FALSE(CheckWritersStatus(backup, &probe));
    EXPECT_TRUE(cancelled.has("Writers state check is succeeded."));
    EXPECT_EQ(journal_count(host, "GetWriterStatusCount"), asked);
}

// Only states six to fifteen are failed ones. A failed writer is logged as an error even by a check
// that is quiet about healthy ones; without a failure code of its own it fails with the generic one.
TEST(WriterStatus, AWriterFailedAfterPrepareFailsTheCheckAndEndsIt) {
    for (int state : {0, 1, 5 /* waiting for backup complete */, 16, -1})
        EXPECT_EQ(FailedWriterStateName(state), nullptr) << state;
    EXPECT_STREQ(FailedWriterStateName(6), "VSS_WS_FAILED_AT_IDENTIFY");
    EXPECT_STREQ(FailedWriterStateName(15), "VSS_WS_FAILED_AT_BACKUPSHUTDOWN");
    // The writer's code, the text of the failure the check ends with, and whether the check is quiet.
    const std::tuple<std::string, std::string, bool> cases[] = {
        {"0x800423f4",
         "The writer experienced a non-transient error.  If the backup process is retried, the error is "
         "likely to reoccur.",
         false},
        {"0x00000000", "Vss error: '0x80004005'", true}};
    for (const auto& [code, text, quiet] : cases) {
        scratch_host_t host(writer_fault("7", code));
        auto backup = prepared_backup();
        log_capture_t log;
        EXPECT_EQ(failure_lines([&] {
                      quiet ? VerifyWriters(backup, nullptr, false) : CheckWritersStatus(backup, nullptr);
                  }),
                  (std::vector<std::string>{"Writer '" + hyperv_name +
                                                "' is failed at 'VSS_WS_FAILED_AT_PREPARE_BACKUP'.",
                                            text, "Failed to verify writers state."}));
        EXPECT_TRUE(log.has("ERR |Writer '" + hyperv_name +
                            "' is failed at 'VSS_WS_FAILED_AT_PREPARE_BACKUP'. [7], [" + code + "]. "));
        EXPECT_FALSE(log.has("Writer 'System Writer' is ok.")) << "the first failed writer ends the check";
        EXPECT_EQ(log.has("Checking writers status. Failed."), !quiet);
    }
}

TEST(WriterStatus, AHostWithoutWritersPassesTheCheckWithoutAWriterLine) {
    scratch_host_t host(
        R"(<Host name="HV02"><Volume name="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000009}\" dir="v" mount="C:\"/></Host>)");
    auto backup = gathered_backup();
    log_capture_t log;
    EXPECT_TRUE(VerifyWriters(backup, nullptr, true));
    EXPECT_FALSE(log.has("Writer '"));
    EXPECT_EQ(journal_count(host, "GetWriterStatusCount"), 1u);
}

// A set probe cancels the pending operation, whether set before the wait or during it. A failing
// Cancel is shown, not raised: the wait is over either way.
TEST(AsyncWait, AProbeSetBeforeOrDuringTheWaitCancelsThePendingOperation) {
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

    // Set again only once the operation has been seen pending, so that the cancel comes between polls.
    event->reset();
    auto async = start_operation(gathered_backup());
    std::thread stopper([event, &host] {
        while (journal_count(host, "QueryStatus", "GatherWriterStatus") == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        event->set();
    });
    EXPECT_FALSE(wait(async, &probe));
    stopper.join();
    EXPECT_EQ(journal_count(host, "Cancel", "GatherWriterStatus"), 2u);
}

// Without a probe, or with the default one, only VSS ends the wait: with the operation done, by
// cancelling it, after which no other cancel follows, or with a status that is none of the three.
TEST(AsyncWait, WithoutAProbeOrWithTheDefaultOneOnlyVssEndsTheWait) {
    // The first fault that fits a call answers it.
    scratch_host_t host(sample_host_xml(R"(<Fault op="GatherWriterStatus" nth="3" status="0x0004230B"/>)"
                                        R"(<Fault op="GatherWriterStatus" nth="4" status="0x0"/>)"
                                        R"(<Fault op="GatherWriterStatus" delayMs="300"/>)"));
    CDefaultTestCancelCallback never;
    log_capture_t log;
    EXPECT_TRUE(wait(start_operation(gathered_backup()), nullptr));
    EXPECT_TRUE(WaitForAsync(start_operation(gathered_backup()), &never));
    EXPECT_GE(journal_count(host, "QueryStatus", "GatherWriterStatus"), 4u)
        << "each wait saw the pending state";
    EXPECT_TRUE(log.has("Waiting for completition of VSS async operation"));
    EXPECT_FALSE(log.has("Failed."));

    EXPECT_FALSE(wait(start_operation(gathered_backup()), nullptr));
    EXPECT_TRUE(log.has("Operation cancelled by 3-rd party"));
    EXPECT_EQ(journal_count(host, "Cancel"), 0u);
    EXPECT_EQ(failure_lines([&] { wait(start_operation(gathered_backup()), nullptr); }),
              (std::vector<std::string>{"Unknown status in a test.", "Vss error: '0x00000000'"}));
    EXPECT_TRUE(log.has("Waiting in a test. Failed."));
}

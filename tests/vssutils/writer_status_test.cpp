// Writer checks after a step: which states fail, what a failed writer leaves in the log and the
// failure, and what a healthy or cancelled check says.
#include "vss_test_support.h"

#include "common/win/event.h"
#include "vssutils/writer_status.h"

#include <gtest/gtest.h>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

std::string writer_fault(const std::string& state, const std::string& hr) {
    return sample_host_xml(
        R"(<WriterFault writer="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" at="prepare" state=")" + state +
        "\" hr=\"" + hr + "\"/>");
}

const std::string hyperv_name = "Microsoft Hyper-V VSS Writer";

} // namespace

TEST(WriterStatus, OnlyStatesSixToFifteenAreFailedStates) {
    for (int state : {0, 1, 5 /* waiting for backup complete */, 16, -1})
        EXPECT_EQ(FailedWriterStateName(state), nullptr) << state;
    EXPECT_STREQ(FailedWriterStateName(6), "VSS_WS_FAILED_AT_IDENTIFY");
    EXPECT_STREQ(FailedWriterStateName(15), "VSS_WS_FAILED_AT_BACKUPSHUTDOWN");
}

TEST(WriterStatus, HealthyWritersAreLoggedOnlyWhenAskedFor) {
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
}

// A failed writer is logged as an error even by a check that is quiet about healthy ones; without
// a failure code of its own it fails with the generic one.
TEST(WriterStatus, AWriterFailedAfterPrepareFailsTheCheckAndEndsIt) {
    struct case_t {
        std::string code;
        std::string text; // of the failure the check ends with
        bool quiet;
    };
    for (const auto& c : {case_t{"0x800423f4",
                                 "The writer experienced a non-transient error.  If the backup process is "
                                 "retried, the error is likely to reoccur.",
                                 false},
                          case_t{"0x00000000", "Vss error: '0x80004005'", true}}) {
        SCOPED_TRACE(c.code);
        scratch_host_t host(writer_fault("7", c.code));
        auto backup = prepared_backup();
        log_capture_t log;
        EXPECT_EQ(failure_lines([&] {
                      c.quiet ? VerifyWriters(backup, nullptr, false) : CheckWritersStatus(backup, nullptr);
                  }),
                  (std::vector<std::string>{"Writer '" + hyperv_name +
                                                "' is failed at 'VSS_WS_FAILED_AT_PREPARE_BACKUP'.",
                                            c.text, "Failed to verify writers state."}));
        EXPECT_TRUE(log.has("ERR |Writer '" + hyperv_name +
                            "' is failed at 'VSS_WS_FAILED_AT_PREPARE_BACKUP'. [7], [" + c.code + "]. "));
        EXPECT_FALSE(log.has("Writer 'System Writer' is ok.")) << "the first failed writer ends the check";
        EXPECT_EQ(log.has("Checking writers status. Failed."), !c.quiet);
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

TEST(WriterStatus, ACancelledCheckIsNoFailureAndStillClosesItsBlock) {
    scratch_host_t host;
    auto backup = prepared_backup();
    auto event = std::make_shared<win::win_manual_reset_event_t>();
    event->set();
    CWinEventTestCancelCallback probe(event);
    log_capture_t log;
    EXPECT_FALSE(CheckWritersStatus(backup, &probe));
    EXPECT_TRUE(log.has("Writers state check is succeeded."));
    EXPECT_EQ(journal_count(host, "GetWriterStatusCount"), 0u);
}

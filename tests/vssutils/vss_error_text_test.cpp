// VSS error texts: known codes read as VSS words them, and every failed lookup still gives a line.
#include "vss_test_support.h"

#include "vssutils/backup_components.h"
#include "vssutils/vss_error_text.h"

#include <gtest/gtest.h>

using namespace VSSUtils;
using namespace vssutils_test;

TEST(VssErrorText, AKnownCodeReadsAsOneLineWithoutTheClosingLineBreak) {
    EXPECT_EQ(VssErrorText(VSS_E_BAD_STATE),
              "A function call was made when the object was in an incorrect state for that function.");
    EXPECT_EQ(VssErrorText(VSS_S_ASYNC_CANCELLED), "The asynchronous operation has been cancelled.");
}

TEST(VssErrorText, AnUnknownCodeGivesTheCodeAndAnErrorLine) {
    log_capture_t log;
    EXPECT_EQ(VssErrorText(E_FAIL), "Vss error: '0x80004005'");
    EXPECT_TRUE(log.has("Failed to get Vss error description. '"));
}

TEST(VssErrorText, WithoutTheMessageModuleEveryFailureStillHasItsSecondLine) {
    hostsim_test::scratch_host_t host(hostsim_test::sample_host_xml(
        R"(<Fault op="LoadLibraryA" err="126"/><Fault op="StartSnapshotSet" hr="0x80042316"/>)"));
    log_capture_t log;
    EXPECT_EQ(failure_lines([&] { StartSnapshotSet(gathered_backup()); }),
              (std::vector<std::string>{"Failed to create VSS snapshot set.", "Vss error: '0x80042316'"}));
    EXPECT_TRUE(log.has("Failed to load library 'vsstrace.dll'. '"));
}

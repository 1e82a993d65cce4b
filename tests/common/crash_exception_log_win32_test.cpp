// Windows only: the exception log that stands in for a minidump, and the filter that was in place
// before the crash frame's. The fault is a made-up access violation at the test's own frame, so
// that the record's stack is one the test knows.
#include "common/crash/crash_filter.h"
#include "common/crash/dump_gens_win32.h"
#include "common/crash/exception_log_win32.h"
#include "common/crash/fault_win32.h"
#include "common/exc/exc.h"
#include "log_test_support.h"
#include "sys_failure.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

namespace {

// An access violation at the caller's own place, with the caller's registers.
struct made_up_fault_t {
    made_up_fault_t() {
        ::RtlCaptureContext(&context);
        record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
        record.ExceptionAddress = reinterpret_cast<void*>(context.Rip);
    }
    EXCEPTION_RECORD record = {};
    CONTEXT context = {};
    EXCEPTION_POINTERS pointers = {&record, &context};
    crash::fault_t fault{&pointers};
};

// Whether the pieces stand in the text in this order.
bool in_order(const std::string& text, std::initializer_list<std::string> pieces) {
    std::size_t at = 0;
    for (const std::string& piece : pieces)
        if ((at = text.find(piece, at)) == std::string::npos)
            return false;
    return true;
}

EXCEPTION_POINTERS* g_seen = nullptr;

LONG WINAPI previous_filter(EXCEPTION_POINTERS* pointers) {
    g_seen = pointers;
    return EXCEPTION_CONTINUE_SEARCH;
}

using exception_log_test = crash_test::dump_folder_test;

} // namespace

TEST_F(exception_log_test, LegacyDumpHoldsTheExceptionTheModulesAndTheStackAndRecordsAreAppended) {
    made_up_fault_t fault;
    crash::win32::legacy_dump_gen_t().generate(0, dumps_.string(), "RZ", &fault.fault);
    ASSERT_EQ(dump_names(), std::vector<std::string>{"RZ_crash_0.log"});
    EXPECT_TRUE(log_has("Writing legacy dump. Dump path: "));
    const std::string record = dump_text("RZ_crash_0.log");
    EXPECT_TRUE(in_order(record, {"// Exception: 0xc0000005, Address: 0x", "// Process test_common.exe (",
                                  "Loaded modules:\n\n", "test_common.exe (", "Stack frames:\n", "0x0000"}))
        << record;
    // Records are appended, and a record without fault tells where it was written.
    const std::wstring path = (dumps_ / "exceptions.log").wstring();
    crash::win32::exception_log().write_record(path, nullptr);
    crash::win32::exception_log().write_record(path, &fault.pointers);
    const std::string records = dump_text("exceptions.log");
    EXPECT_TRUE(
        in_order(records, {"// Exception: 0x00000000, Address: 0x00000000", "// Exception: 0xc0000005"}))
        << records;
    EXPECT_TRUE(crash::win32::exception_log_t::default_file().ends_with(L"test_common-exceptions.log"));
}

TEST_F(exception_log_test, AFolderThatCannotBeMadeOrAFileThatCannotBeOpenedIsAFailureWithItsReason) {
    std::ofstream(dumps_ / "file") << "a file, not a folder";
    const std::string blocked = (dumps_ / "file" / "dumps").string();
    EXPECT_EQ(
        failure_lines([&] { crash::win32::legacy_dump_gen_t().generate(0, blocked, "RZ", nullptr); }, 1),
        std::vector<std::string>{"Crash details cannot be stored in legacy format."});
    EXPECT_EQ(sys_failure([&] { crash::win32::exception_log().write_record(dumps_.wstring(), nullptr); }),
              "5 Cannot open the exception log. File path: [" + dumps_.string() + "].");
}

TEST_F(exception_log_test, ThePreviousFilterAnswersForAFaultPassedOn) {
    made_up_fault_t fault;
    const crash::raw_filter_t saved = crash::crash_context().previous_filter;
    crash::crash_context().previous_filter = reinterpret_cast<crash::raw_filter_t>(&previous_filter);
    EXPECT_EQ(crash::crash_filter(&fault.fault, crash::previous_filter_t::ask), EXCEPTION_CONTINUE_SEARCH);
    crash::crash_context().previous_filter = saved;
    EXPECT_EQ(g_seen, &fault.pointers);
    EXPECT_EQ(dump_names(), std::vector<std::string>{"RZ_crash_0.mdmp"});
}

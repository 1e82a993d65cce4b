// Windows only: the exception log that stands in for a minidump, and the filter that was in place
// before the crash frame's. The fault is a made-up access violation at the test's own frame, so
// that the record's stack is one the test knows.
#include "common/crash/crash_filter.h"
#include "common/crash/dump_gens_win32.h"
#include "common/crash/exception_log_win32.h"
#include "common/crash/fault_win32.h"
#include "common/exc/exc.h"
#include "log_test_support.h"

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
    EXPECT_NE(record.find("// Exception: 0xc0000005, Address: 0x"), std::string::npos) << record;
    EXPECT_NE(record.find("// Process test_common.exe ("), std::string::npos) << record;
    const std::size_t modules = record.find("Loaded modules:\n\n");
    const std::size_t frames = record.find("Stack frames:\n");
    ASSERT_NE(modules, std::string::npos) << record;
    ASSERT_NE(frames, std::string::npos) << record;
    EXPECT_NE(record.substr(modules, frames - modules).find("test_common.exe ("), std::string::npos)
        << record;
    EXPECT_NE(record.substr(frames).find("0x0000"), std::string::npos) << "no frame: " << record;
    // Records are appended, and a record without fault tells where it was written.
    const std::wstring path = (dumps_ / "exceptions.log").wstring();
    crash::win32::exception_log().write_record(path, nullptr);
    crash::win32::exception_log().write_record(path, &fault.pointers);
    const std::string records = dump_text("exceptions.log");
    const std::size_t first = records.find("// Exception: 0x00000000, Address: 0x00000000");
    const std::size_t second = records.find("// Exception: 0xc0000005");
    ASSERT_NE(first, std::string::npos) << records;
    EXPECT_GT(second, first);
    EXPECT_NE(second, std::string::npos) << records;
    EXPECT_TRUE(crash::win32::exception_log_t::default_file().ends_with(L"test_common-exceptions.log"));
}

TEST_F(exception_log_test, AFolderThatCannotBeMadeOrAFileThatCannotBeOpenedIsAFailureWithItsReason) {
    std::ofstream(dumps_ / "file") << "a file, not a folder";
    try {
        crash::win32::legacy_dump_gen_t().generate(0, (dumps_ / "file" / "dumps").string(), "RZ", nullptr);
        ADD_FAILURE() << "no failure";
    } catch (const exc::exc_base_t& e) {
        EXPECT_EQ(e.messages().back().text, "Crash details cannot be stored in legacy format.");
    }
    try {
        crash::win32::exception_log().write_record(dumps_.wstring(), nullptr);
        ADD_FAILURE() << "no failure";
    } catch (const exc::win_sys_exc_t& e) {
        EXPECT_EQ(e.messages().back().text,
                  "Cannot open the exception log. File path: [" + dumps_.string() + "].");
    }
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

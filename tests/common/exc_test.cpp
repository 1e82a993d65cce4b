// Exceptions: their stacks of messages, cause first, their copies, and the system's and COM's error texts.
#include "common/exc/exc.h"
#include "sys_failure.h"
#include "wine_error_texts.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <system_error>

#include <boost/system/system_error.hpp>

#ifdef _WIN32
#include <ole2.h>
#endif

namespace {

// A foreign exception whose what() is null, as some dependencies produce.
struct null_text_exception : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

void fail_snapshot_task() {
    try {
        try {
            throw exc::win_sys_exc_t("CreateDirectory(%1) function call failed.", "C:\\B", 5);
        } catch (const std::exception& e) {
            exc::rethrow_with_message("Cannot create folder. Folder path: [%1].", "C:\\B", e);
        }
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to create snapshot task. Job: '%1'. Backup console: '%2'.", "J", "C",
                                e);
    }
}

// What a foreign exception becomes once wrapped with a trace line.
template <typename Throw> exc::runtime_exc_t wrapped_with_trace(Throw thrower, const std::string& line) {
    try {
        try {
            thrower();
        } catch (const std::exception& e) {
            exc::rethrow_with_trace(line, e);
        }
    } catch (const exc::runtime_exc_t& e) {
        return e;
    }
    ADD_FAILURE() << "no runtime exception";
    return exc::runtime_exc_t("");
}

#ifdef _WIN32
// Sets the calling thread's COM error object, with the description or without one.
void set_error_object(const wchar_t* description) {
    ICreateErrorInfo* create = nullptr;
    ASSERT_EQ(::CreateErrorInfo(&create), S_OK);
    if (description != nullptr)
        create->SetDescription(const_cast<LPOLESTR>(description));
    IErrorInfo* info = nullptr;
    ASSERT_EQ(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)), S_OK);
    EXPECT_EQ(::SetErrorInfo(0, info), S_OK);
    info->Release();
    create->Release();
}
#endif

} // namespace

TEST(ExceptionStack, CreateDirectoryFailureReadsCauseFirstThroughEveryLayerJoinedByLineFeeds) {
    try {
        fail_snapshot_task();
        FAIL() << "nothing thrown";
    } catch (const exc::win_sys_exc_t& e) {
        EXPECT_EQ(e.code(), 5u);
        EXPECT_EQ(wine_texts::as_windows(e.what()),
                  "Access is denied.\r\n"
                  "\n"
                  "CreateDirectory(C:\\B) function call failed.\n"
                  "Cannot create folder. Folder path: [C:\\B].\n"
                  "--tr:Failed to create snapshot task. Job: 'J'. Backup console: 'C'.");
    }
    // Entries are joined with line feeds, and only trace lines are tagged.
    EXPECT_STREQ(exc::exc_base_t().what(), "");

    exc::exc_base_t stack;
    stack.append_entry("inner", true);
    EXPECT_STREQ(stack.what(), "--tr:inner");
    stack.append_message("%1 and %2", "a", "b");
    EXPECT_STREQ(stack.what(), "--tr:inner\na and b");
    EXPECT_EQ(stack.plain_text(), "inner\na and b");
}

TEST(ExceptionStack, WrappingKeepsTheOwnExceptionAndMakesAForeignCauseARuntimeExceptionWithItsTextAndCode) {
    exc::com_exc_t original(static_cast<std::int32_t>(0x80042306u), "first");
    const exc::exc_base_t* address = nullptr;
    try {
        try {
            throw original;
        } catch (const exc::exc_base_t& e) {
            address = &e;
            exc::rethrow_with_trace("%1 %2 %3", "x", "y", "z", e);
        }
    } catch (const exc::com_exc_t& e) {
        EXPECT_EQ(&e, address);
        EXPECT_EQ(e.code(), static_cast<std::int32_t>(0x80042306u));
        EXPECT_EQ(std::string(e.what()), std::string(original.what()) + "\n--tr:x y z");
    }
    // A foreign cause becomes a runtime exception with its text first and its system code.
    const exc::runtime_exc_t from_bad_alloc =
        wrapped_with_trace([] { throw std::bad_alloc(); }, "Failed to go on.");
    EXPECT_EQ(from_bad_alloc.code(), 0u);
    EXPECT_EQ(std::string(from_bad_alloc.what()),
              std::string(std::bad_alloc().what()) + "\n--tr:Failed to go on.");
    EXPECT_STREQ(wrapped_with_trace([] { throw null_text_exception(); }, "outer").what(), "\n--tr:outer");
    // A system error of a dependency lends its code.
    const auto boost_error = [] {
        throw boost::system::system_error(boost::system::error_code(32, boost::system::system_category()));
    };
    EXPECT_EQ(wrapped_with_trace(boost_error, "outer").code(), 32u);
    const auto std_error = [] { throw std::system_error(std::error_code(17, std::generic_category())); };
    EXPECT_EQ(wrapped_with_trace(std_error, "outer").code(), 17u);
}

// A stored copy is wrapped outside any handler too, and is thrown as what it was.
TEST(ExceptionCopies, CloneRethrowAndWrappingKeepTheDynamicTypeButALockedFileLosesItThroughRethrow) {
    const exc::win_sys_exc_t original("context", 2);
    std::shared_ptr<exc::exc_base_t> copy = original.clone();
    EXPECT_STREQ(copy->what(), original.what());
    EXPECT_EQ(sys_failure([&] { copy->rethrow(); }), "2 context");
    EXPECT_EQ(sys_failure([&] { exc::rethrow_with_trace("outer", *copy); }), "2 outer");
    exc::runtime_exc_t runtime("r");
    runtime.set_code(7);
    EXPECT_EQ(wrapped_with_trace([&] { runtime.clone()->rethrow(); }, "outer").code(), 7u);
    EXPECT_THROW(exc::com_exc_t(1).clone()->rethrow(), exc::com_exc_t);
    // A locked file loses its type only through rethrow.
    const exc::file_locked_exc_t locked("C:\\vm.vhdx");
    EXPECT_EQ(dynamic_cast<exc::file_locked_exc_t&>(*locked.clone()).file_name(), "C:\\vm.vhdx");
    try {
        locked.rethrow();
    } catch (const exc::file_locked_exc_t&) {
        FAIL() << "the locked-file type must not survive rethrow";
    } catch (const exc::exc_base_t& e) {
        EXPECT_STREQ(e.what(), "File [C:\\vm.vhdx] is locked.");
    }
}

TEST(SystemErrorText, KnownCodesKeepTheSystemsClosingLineBreakInternetCodesTheirOwnTable) {
    using wine_texts::as_windows;
    EXPECT_EQ(as_windows(exc::sys_error_text(2)), "The system cannot find the file specified.\r\n");
    EXPECT_EQ(as_windows(exc::sys_error_text(32)),
              "The process cannot access the file because it is being used by another process.\r\n");
    EXPECT_EQ(as_windows(exc::sys_error_text(1705)),
              "The string universal unique identifier (UUID) is invalid.\r\n");
    EXPECT_EQ(as_windows(exc::sys_error_text(0x80004005u)), "Unspecified error\r\n");
    // An HRESULT of the Win32 facility reads as its Win32 code.
    EXPECT_EQ(exc::sys_error_text(0x80070057u), exc::sys_error_text(87));
    // Internet codes come from their own table, only in their range.
    EXPECT_EQ(as_windows(exc::sys_error_text(12007)), "The server name or address could not be resolved\r\n");
    // Beyond the range, and for any code no table holds, the number closes the last-resort text.
    for (const std::uint32_t unknown : {12175u, 4000000001u}) {
        const std::string text = exc::sys_error_text(unknown);
        EXPECT_TRUE(text.ends_with(". Error code: " + std::to_string(unknown))) << text;
    }
}

TEST(ComErrorText, WithoutErrorObjectIsTheCodeAloneWithItsLeadingBlank) {
    EXPECT_EQ(exc::com_error_text(static_cast<std::int32_t>(0x80042306u)), " Error code: 0x80042306");
    EXPECT_EQ(exc::com_error_text(5), " Error code: 0x00000005");

    const exc::com_exc_t e(static_cast<std::int32_t>(0x80004005u), "Failed to %1.", "go");
    EXPECT_STREQ(e.what(), " Error code: 0x80004005\nFailed to go.");
}

#ifdef _WIN32
// Only Windows has a thread's COM error object: its description leads the text, and reading it
// takes it away.
TEST(ComErrorText, TheThreadsErrorObjectLeadsTheTextOnce) {
    set_error_object(L"The writer refused.");
    EXPECT_EQ(exc::com_error_text(static_cast<std::int32_t>(0x80004005u)),
              "The writer refused. Error code: 0x80004005");
    EXPECT_EQ(exc::com_error_text(static_cast<std::int32_t>(0x80004005u)), " Error code: 0x80004005");
    set_error_object(nullptr);
    EXPECT_EQ(exc::com_error_text(static_cast<std::int32_t>(0x80004005u)), " Error code: 0x80004005");
}
#endif

#include "common/exc/exc.h"
#include "wine_error_texts.h"

#include <gtest/gtest.h>

#include <string>

#ifdef _WIN32
#include <ole2.h>
#endif

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
    EXPECT_EQ(wine_texts::as_windows(exc::sys_error_text(12007)),
              "The server name or address could not be resolved\r\n");
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
namespace {

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

} // namespace

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

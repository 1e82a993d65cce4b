#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "tests/support/process_env.h"

#include <gtest/gtest.h>

const std::wstring non_ascii = L"Caf\u00e9 \u65e5\u672c \u00c4";

TEST(TextConversion, RoundTripsNonAsciiTextAndEndsAtTheFirstZero) {
    EXPECT_EQ(from_utf8(to_utf8(non_ascii)), non_ascii);
    EXPECT_EQ(to_utf8(L"\u00e9"), "\xc3\xa9");
    EXPECT_EQ(to_ansi(L""), "");
    EXPECT_EQ(to_utf8(L""), "");
    EXPECT_EQ(to_unicode(""), L"");
    EXPECT_EQ(from_utf8(""), L"");
    EXPECT_EQ(to_ansi(std::wstring(L"ab\0cd", 5)), "ab");
    EXPECT_EQ(from_utf8(std::string("ab\0cd", 5)), L"ab");
}

TEST(ValueTexts, NumbersPrintUngroupedAndHexZeroFilledAndOnlyFalseAndZeroAreFalse) {
    EXPECT_EQ(num_to_string(static_cast<std::int32_t>(0x80070005u)), "-2147024891");
    EXPECT_EQ(num_to_string(std::uint64_t{18446744073709551615ULL}), "18446744073709551615");
    EXPECT_EQ(hex_to_string(0xABu), "0x000000ab");
    for (const char* text : {"TRUE", "no", "", "00"})
        EXPECT_TRUE(string_to_bool(text)) << text;
    for (const char* text : {"False", "0"})
        EXPECT_FALSE(string_to_bool(text)) << text;
}

TEST(GuidText, RoundTripsInLowerCaseWithBracesAndRefusalsNameTheText) {
    const GUID guid = {0x66841CD4, 0x6DED, 0x4F4B, {0x8F, 0x17, 0xFD, 0x23, 0xF8, 0xDD, 0xC3, 0xDE}};
    EXPECT_EQ(guid_to_wstring(guid), L"{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}");
    EXPECT_EQ(guid_to_string(guid), "{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}");
    EXPECT_EQ(string_to_guid(guid_to_wstring(guid)), guid);
    EXPECT_EQ(string_to_guid("66841CD4-6DED-4F4B-8F17-FD23F8DDC3DE"), guid);
    EXPECT_EQ(string_to_guid(L"{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de"), guid);
    EXPECT_EQ(string_to_guid(L"66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}"), guid);
    // Refused texts fail with the status and the given text.
    for (const std::wstring text :
         {L"", L"{", L"{}", L"{{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}}",
          L"66841cd4-6ded-4f4b-8f17-fd23f8ddc3d", L"66841cd4-6ded-4f4b-8f17+fd23f8ddc3de",
          L"66841cd4-6ded-4f4b-8f17-fd23f8ddc3dg"}) {
        try {
            string_to_guid(text);
            ADD_FAILURE() << to_ansi(text);
        } catch (const exc::win_sys_exc_t& e) {
            EXPECT_EQ(e.code(), 1705u);
            EXPECT_EQ(e.messages().back().text, "Failed to convert string [" + to_ansi(text) + "] to UUID.");
        }
    }
}

TEST(CaseFolding, FoldsAsciiLettersOnlyAndLogShorteningCutsAt128) {
    EXPECT_TRUE(iequals(std::string("Hyper-V"), std::string("hYPER-v")));
    EXPECT_FALSE(iequals(std::string("ab"), std::string("abc")));
    EXPECT_TRUE(iequals(std::wstring(L"C:\\VMs"), std::wstring(L"c:\\vms")));
    EXPECT_FALSE(iequals(std::wstring(L"\u00c4"), std::wstring(L"\u00e4")));
    EXPECT_EQ(to_lower(L"AZ[az]\u00c4"), L"az[az]\u00c4");
    const std::string exact(128, 'x');
    EXPECT_EQ(shorten_for_log(exact), exact);
    const std::string longer = std::string(128, 'y') + "tail";
    EXPECT_EQ(shorten_for_log(longer), std::string(128, 'y') + "..., length: 132");
}

TEST(EnvironmentExpansion, KnownNamesExpandUnknownOnesStay) {
    test_env::set("MIRRACK_CORE_TEST_VAR", "value");
    test_env::unset("MIRRACK_CORE_UNSET_VAR");
    EXPECT_EQ(expand_env(L"a%MIRRACK_CORE_TEST_VAR%b"), L"avalueb");
    EXPECT_EQ(expand_env(L"%MIRRACK_CORE_UNSET_VAR%%MIRRACK_CORE_TEST_VAR%"),
              L"%MIRRACK_CORE_UNSET_VAR%value");
    EXPECT_EQ(expand_env(L"100% and %%"), L"100% and %%");
    EXPECT_EQ(expand_env(L"%MIRRACK_CORE_TEST_VAR"), L"%MIRRACK_CORE_TEST_VAR");
    EXPECT_EQ(expand_env(L""), L"");
}

TEST(FormatMessage, MarkersSelectArgumentsInAnyOrderRepeatAndEndAtTheFirstNonDigit) {
    EXPECT_EQ(format_message("%2 %1", "A", "B"), "B A");
    EXPECT_EQ(format_message("%1%1-%3", "x", "y", "z"), "xx-z");
    EXPECT_EQ(format_message("[%1][%2][%3][%4]", "a", "b", "c", "d"), "[a][b][c][d]");
    EXPECT_EQ(format_message_w(L"\\\\.\\pipe\\%1", L"name"), L"\\\\.\\pipe\\name");
    EXPECT_EQ(format_message_w(L"%2/%1", L"a", L"b"), L"b/a");
    std::vector<std::string> twelve;
    for (int i = 1; i <= 12; ++i)
        twelve.push_back(std::string("v").append(std::to_string(i)));
    EXPECT_EQ(format_message("%12|%1 2", twelve), "v12|v1 2");
    EXPECT_EQ(format_message("%1", std::vector<std::string>{}), "%1");
    EXPECT_EQ(format_message_w(L"50% %", L"a"), L"50% %");
    // Arguments are not expanded again, and the template ends at its first zero.
    EXPECT_EQ(format_message("%1 %2", "%2", "b"), "%2 b");
    EXPECT_EQ(format_message(std::string("a%1\0%1", 5), "x"), "ax");
    // Markers without an argument stay as parsed, and other percent signs are copied.
    EXPECT_EQ(format_message("%12|%3 %0|%007|%-1|% 1|%+1|%99999999999|%-99999999999|%%1|%%|%-x|100%", "a"),
              "%12|%3 %0|%7|%-1|a|a|%2147483647|%-2147483648|%a|%%|%-x|100%");
}

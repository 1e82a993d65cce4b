// POSIX only: the ANSI code page is UTF-8 here, and strictness is ours, not the Windows code page's.
#include "common/exc/exc.h"
#include "common/format/format.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

const std::uint32_t no_unicode_translation = 1113;

template <typename Call> exc::win_sys_exc_t conversion_failure(Call call) {
    try {
        call();
    } catch (const exc::win_sys_exc_t& e) {
        return e;
    }
    ADD_FAILURE() << "conversion did not fail";
    return exc::win_sys_exc_t(0);
}

} // namespace

TEST(StrictConversion, MalformedUtf8FailsWithTheSourceText) {
    for (const std::string bad : {"\xff", "a\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\x80"}) {
        const auto e = conversion_failure([&] { from_utf8(bad); });
        EXPECT_EQ(e.code(), no_unicode_translation);
        EXPECT_EQ(e.messages().back().text,
                  "Multibyte UTF8 string cannot be converted to unicode string. Source string: [" + bad +
                      "].");
        const auto ansi = conversion_failure([&] { to_unicode(bad); });
        EXPECT_EQ(ansi.messages().back().text,
                  "Multibyte string cannot be converted to unicode string. Source string: [" + bad + "].");
    }
    EXPECT_EQ(to_unicode_nothrow("\xff"), L"ANSI -> UNICODE failed.");
}

// Long runs of ASCII take a faster road: what stands inside or right behind such a run must be
// judged as strictly as a short text.
TEST(StrictConversion, MalformedSequenceInsideLongAsciiTextFailsAtAnyPosition) {
    const std::string ascii(40, 'a');
    for (std::size_t at = 0; at <= ascii.size(); ++at) {
        for (const std::string bad : {"\xff", "\xc3", "\xed\xa0\x80"}) {
            const std::string text = ascii.substr(0, at) + bad + ascii.substr(at);
            EXPECT_EQ(conversion_failure([&] { from_utf8(text); }).code(), no_unicode_translation) << at;
        }
        std::wstring wide(ascii.begin(), ascii.end());
        wide.insert(at, 1, wchar_t(0xDC00));
        EXPECT_EQ(conversion_failure([&] { to_utf8(wide); }).code(), no_unicode_translation) << at;
    }
}

TEST(StrictConversion, NonAsciiAnywhereInLongTextRoundTrips) {
    const std::wstring ascii(40, L'a');
    for (std::size_t at = 0; at <= ascii.size(); ++at) {
        for (const wchar_t c : {wchar_t(0xE9), wchar_t(0x20AC), wchar_t(0x1F600)}) {
            std::wstring wide = ascii;
            wide.insert(at, 1, c);
            EXPECT_EQ(from_utf8(to_utf8(wide)), wide) << at;
            EXPECT_EQ(to_utf8(wide).size(), ascii.size() + (c < 0x800 ? 2 : c < 0x10000 ? 3 : 4));
        }
    }
}

TEST(StrictConversion, WideTextWithoutScalarValuesFails) {
    for (const std::wstring& bad : {std::wstring(1, wchar_t(0xD800)), std::wstring(L"a") + wchar_t(0xDFFF),
                                    std::wstring(1, wchar_t(0x110000))}) {
        const auto e = conversion_failure([&] { to_utf8(bad); });
        EXPECT_EQ(e.code(), no_unicode_translation);
        EXPECT_EQ(e.messages().back().text, "Unicode string cannot be converted to UTF8 string.");
        const auto ansi = conversion_failure([&] { to_ansi(bad); });
        EXPECT_EQ(ansi.messages().back().text, "Unicode string cannot be converted to multibyte string.");
        EXPECT_EQ(to_ansi_nothrow(bad), "UNICODE->ANSI failed");
    }
}

TEST(StrictConversion, LargestScalarValuesPass) {
    EXPECT_EQ(to_utf8(std::wstring(1, wchar_t(0x10FFFF))), "\xf4\x8f\xbf\xbf");
    EXPECT_EQ(from_utf8("\xef\xbf\xbf\xf0\x90\x80\x80"), std::wstring(L"\uffff") + wchar_t(0x10000));
}

TEST(EnvironmentExpansion, KnownNamesExpandUnknownOnesStay) {
    ::setenv("MIRRACK_CORE_TEST_VAR", "value", 1);
    ::unsetenv("MIRRACK_CORE_UNSET_VAR");
    EXPECT_EQ(expand_env(L"a%MIRRACK_CORE_TEST_VAR%b"), L"avalueb");
    EXPECT_EQ(expand_env(L"%MIRRACK_CORE_UNSET_VAR%%MIRRACK_CORE_TEST_VAR%"),
              L"%MIRRACK_CORE_UNSET_VAR%value");
    EXPECT_EQ(expand_env(L"100% and %%"), L"100% and %%");
    EXPECT_EQ(expand_env(L"%MIRRACK_CORE_TEST_VAR"), L"%MIRRACK_CORE_TEST_VAR");
    EXPECT_EQ(expand_env(L""), L"");
}

TEST(LocalClock, FileTimeCarriesTheLocalOffset) {
    const std::time_t before = std::time(nullptr);
    const std::uint64_t filetime = local_filetime_now();
    const std::time_t after = std::time(nullptr);
    std::tm local{};
    localtime_r(&before, &local);
    const std::int64_t seconds_1601_to_1970 = 11644473600LL;
    const auto seconds = static_cast<std::int64_t>(filetime / 10000000ULL) - seconds_1601_to_1970;
    EXPECT_GE(seconds, before + local.tm_gmtoff - 1);
    EXPECT_LE(seconds, after + local.tm_gmtoff + 1);
}

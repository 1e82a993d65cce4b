// POSIX only: the ANSI code page is UTF-8 here, not a Windows code page.
#include "common/exc/convert.h"
#include "common/format/format.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

const std::wstring r(1, wchar_t(0xFFFD));

struct bad_bytes_t {
    const char* name;
    std::string bytes;
    std::wstring wide;
};

// One replacement character per maximal subpart: the longest start of a well-formed sequence,
// or a single byte that starts none.
const bad_bytes_t bad_bytes[] = {
    {"lone_ff", "\xff", r},
    {"truncated_at_end", "a\xc3", L"a" + r},
    {"truncated_before_ascii", "\xe2\x82x", r + L"x"},
    {"truncated_four_bytes", "\xf0\x9f\x98", r},
    {"stray_continuations", "\x80\xbf", r + r},
    {"overlong_two_bytes", "\xc0\xaf", r + r},
    {"overlong_three_bytes", "\xe0\x80\x80", r + r + r},
    {"encoded_surrogate", "\xed\xa0\x80", r + r + r},
    {"above_last_code_point", "\xf4\x90\x80\x80", r + r + r + r},
    {"mixed", "\x61\xf1\x80\x80\xe1\x80\xc2\x62\x80\x63\x80\xbf\x64",
     L"a" + r + r + r + L"b" + r + L"c" + r + r + L"d"},
    {"largest_values_pass", "\xef\xbf\xbf\xf4\x8f\xbf\xbf", std::wstring(L"\uffff") + wchar_t(0x10FFFF)},
};

} // namespace

TEST(ReplacingConversion, WideTextWithoutScalarValuesNarrowsToReplacements) {
    const std::string fffd = "\xef\xbf\xbd";
    // UTF-32 does not pair surrogates: each one is a bad character of its own.
    const std::wstring bad =
        std::wstring(L"a") + wchar_t(0xD800) + wchar_t(0xDC00) + L"b" + wchar_t(0x110000);
    const std::string expected = "a" + fffd + fffd + "b" + fffd;
    EXPECT_EQ(to_utf8(bad), expected);
    EXPECT_EQ(to_ansi(bad), expected);
    EXPECT_EQ(to_ansi_nothrow(bad), expected);
    // The system's conversions with no flags: bad input never fails, and every sequence that is not
    // well-formed stands as U+FFFD while the rest is kept. Long runs of ASCII take a faster road: what
    // stands inside or right behind such a run must be read as a short text is.
    for (const bad_bytes_t& c : bad_bytes) {
        EXPECT_EQ(from_utf8(c.bytes), c.wide) << c.name;
        EXPECT_EQ(to_unicode(c.bytes), c.wide) << c.name;
        EXPECT_EQ(to_unicode_nothrow(c.bytes), c.wide) << c.name;
    }
    const std::string ascii(40, 'a');
    const std::wstring wide_ascii(ascii.begin(), ascii.end());
    for (std::size_t at = 0; at <= ascii.size(); ++at) {
        for (const bad_bytes_t& c : bad_bytes) {
            const std::string text = ascii.substr(0, at) + c.bytes + ascii.substr(at);
            EXPECT_EQ(from_utf8(text), wide_ascii.substr(0, at) + c.wide + wide_ascii.substr(at))
                << c.name << at;
        }
        std::wstring wide = wide_ascii;
        wide.insert(at, 1, wchar_t(0xDC00));
        EXPECT_EQ(to_utf8(wide), ascii.substr(0, at) + "\xef\xbf\xbd" + ascii.substr(at)) << at;
        for (const wchar_t c : {wchar_t(0xE9), wchar_t(0x20AC), wchar_t(0x1F600)}) {
            std::wstring round = wide_ascii;
            round.insert(at, 1, c);
            EXPECT_EQ(from_utf8(to_utf8(round)), round) << at;
            EXPECT_EQ(to_unicode(to_ansi(round)), round) << at;
        }
    }
    // Wide text is narrowed a stage of a thousand characters at a time: around the stages' seams.
    const std::wstring long_ascii(2100, L'b');
    for (const std::size_t at : {1023, 1024, 1025, 2047, 2048, 2100}) {
        std::wstring round = long_ascii;
        round.insert(at, 1, wchar_t(0x20AC));
        EXPECT_EQ(to_utf8(round), std::string(at, 'b') + "\xe2\x82\xac" + std::string(2100 - at, 'b')) << at;
    }
}

// The ANSI code page is UTF-8 here, so a character can take up to four bytes.
TEST(LocalText, LogShorteningCountsCharactersNotBytesAndFileTimeCarriesTheLocalOffset) {
    const std::string e_acute = "\xc3\xa9";
    std::string whole;
    for (int i = 0; i < 128; ++i)
        whole += e_acute;
    EXPECT_EQ(shorten_for_log(whole), whole);
    const std::string cut = std::string(127, 'a') + e_acute + "\xf0\x9f\x98\x80" + "bc";
    EXPECT_EQ(shorten_for_log(cut), std::string(127, 'a') + e_acute + "..., length: 131");
    // The offset to compare with is the C library's tm_gmtoff, which Windows' runtime lacks.
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

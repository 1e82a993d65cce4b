#include "invoke/pipe_text.h"

#include <gtest/gtest.h>

#include <vector>

using namespace win::pipes;

// Long plain runs take a faster road; what needs care must be seen wherever it stands in them.
// A zero anywhere is read against the UTF-8 road below.
TEST(PipeFrameText, SurrogatesAreSeenAnywhereInALongTextAndAMissingZeroIsNoticed) {
    const std::wstring plain(40, L'x');
    const byte_buffer_t plain_bytes = EncodeFrameText(plain);
    const byte_buffer_t pair = {0x3D, 0xD8, 0x00, 0xDE};
    for (std::size_t at = 0; at <= plain.size(); ++at) {
        const auto split = plain_bytes.begin() + static_cast<std::ptrdiff_t>(2 * at);

        std::wstring astral = plain;
        astral.insert(at, L"\U0001F600");
        byte_buffer_t with_pair(plain_bytes.begin(), split);
        with_pair.insert(with_pair.end(), pair.begin(), pair.end());
        with_pair.insert(with_pair.end(), split, plain_bytes.end());
        EXPECT_EQ(EncodeFrameText(astral), with_pair) << at;
        EXPECT_EQ(DecodeFrameText(with_pair).text, astral) << at;

        byte_buffer_t lone(with_pair);
        lone.erase(lone.begin() + static_cast<std::ptrdiff_t>(2 * at + 2),
                   lone.begin() + static_cast<std::ptrdiff_t>(2 * at + 4));
        const std::wstring kept = DecodeFrameText(lone).text;
        ASSERT_EQ(kept.size(), plain.size() + 1);
        EXPECT_EQ(static_cast<unsigned>(kept[at]), 0xD83Du) << at;
        EXPECT_EQ(EncodeFrameText(kept), lone) << at;
    }
    const frame_text_t open = DecodeFrameText({'a', 0, 'b', 0, 'c'});
    EXPECT_FALSE(open.terminated);
    EXPECT_EQ(open.text, L"ab");
    EXPECT_FALSE(DecodeFrameText({}).terminated);
}

// The UTF-8 road of the server must read every frame as the wide road does where the text is
// well-formed, wherever the odd character stands among long plain runs, and replace what is not
// well-formed by U+FFFD as the system's conversions do.
TEST(PipeFrameUtf8, AgreesWithTheWideRoadAndReplacesWhatIsNotWellFormed) {
    const std::string replacement = "\xEF\xBF\xBD";
    const std::string plain(40, 'x');
    for (std::size_t at = 0; at <= plain.size(); ++at) {
        for (const std::string& odd :
             std::vector<std::string>{"\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", std::string(1, '\0')}) {
            std::string text = plain;
            text.insert(at, odd);
            const byte_buffer_t frame = EncodeFrameUtf8("xml:", text);
            const frame_text_t wide = DecodeFrameText(frame);
            const utf8_frame_t narrow = DecodeFrameUtf8(frame);
            EXPECT_EQ(narrow.terminated, wide.terminated);
            EXPECT_EQ(narrow.first_unpaired, std::string::npos);
            EXPECT_EQ(narrow.text, "xml:" + (odd[0] == '\0' ? text.substr(0, at) : text)) << at;
            EXPECT_EQ(EncodeFrameText(wide.text), EncodeFrameUtf8(narrow.text)) << at;
        }
        byte_buffer_t lone = EncodeFrameUtf8(plain);
        lone.insert(lone.begin() + static_cast<std::ptrdiff_t>(2 * at), {0x3D, 0xD8});
        std::string expected = plain;
        expected.insert(at, replacement);
        EXPECT_EQ(DecodeFrameUtf8(lone).text, expected) << at;
        EXPECT_EQ(DecodeFrameUtf8(lone).first_unpaired, at);
    }
    const utf8_frame_t unpaired = DecodeFrameUtf8({'x', 0, 0x00, 0xDC, 0x00, 0xD8, 'x', 0, 0x3D, 0xD8});
    EXPECT_EQ(unpaired.text, "x" + replacement + replacement + "x" + replacement);
    EXPECT_EQ(unpaired.first_unpaired, 1u);
    EXPECT_FALSE(DecodeFrameUtf8({'a', 0, 'b'}).terminated);

    // One U+FFFD for each maximal subpart: a cut sequence, a stray byte, an encoded surrogate.
    const std::pair<std::string, std::wstring> bad[] = {{"a\xE2\x82"
                                                         "b",
                                                         L"a\uFFFDb"},
                                                        {"\xC0\xAF", L"\uFFFD\uFFFD"},
                                                        {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},
                                                        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
                                                        {"\xF0\x9F\x98", L"\uFFFD"}};
    for (const auto& [utf8, wide] : bad)
        EXPECT_EQ(EncodeFrameUtf8(utf8), EncodeFrameText(wide)) << utf8;
}

#include "invoke/pipe_text.h"

#include <gtest/gtest.h>

using namespace win::pipes;

TEST(PipeFrameText, TextIsUtf16LittleEndianClosedByOneZero) {
    const std::wstring text = L"a\u00e9\U0001F600";
    const byte_buffer_t expected = {'a', 0, 0xE9, 0, 0x3D, 0xD8, 0x00, 0xDE, 0, 0};
    EXPECT_EQ(EncodeFrameText(text), expected);
    const frame_text_t decoded = DecodeFrameText(expected);
    EXPECT_TRUE(decoded.terminated);
    EXPECT_EQ(decoded.text, text);
}

TEST(PipeFrameText, TheTextEndsAtTheFirstZeroAndItsAbsenceIsNoticed) {
    const frame_text_t cut = DecodeFrameText({'a', 0, 0, 0, 'b', 0, 0, 0});
    EXPECT_TRUE(cut.terminated);
    EXPECT_EQ(cut.text, L"a");

    const frame_text_t open = DecodeFrameText({'a', 0, 'b', 0, 'c'});
    EXPECT_FALSE(open.terminated);
    EXPECT_EQ(open.text, L"ab");
    EXPECT_FALSE(DecodeFrameText({}).terminated);
}

TEST(PipeFrameText, ALoneSurrogateIsKeptAsTheUnitItIs) {
    const frame_text_t decoded = DecodeFrameText({0x00, 0xD8, 'x', 0, 0, 0});
    ASSERT_EQ(decoded.text.size(), 2u);
    EXPECT_EQ(static_cast<unsigned>(decoded.text[0]), 0xD800u);
    EXPECT_EQ(EncodeFrameText(decoded.text), (byte_buffer_t{0x00, 0xD8, 'x', 0, 0, 0}));
}

// Long plain runs take a faster road; what needs care must be seen wherever it stands in them.
TEST(PipeFrameText, ZerosAndSurrogatesAreSeenAnywhereInALongText) {
    const std::wstring plain(40, L'x');
    const byte_buffer_t plain_bytes = EncodeFrameText(plain);
    const byte_buffer_t pair = {0x3D, 0xD8, 0x00, 0xDE};
    for (std::size_t at = 0; at <= plain.size(); ++at) {
        const auto split = plain_bytes.begin() + static_cast<std::ptrdiff_t>(2 * at);

        byte_buffer_t with_zero(plain_bytes.begin(), split);
        with_zero.insert(with_zero.end(), {0, 0});
        with_zero.insert(with_zero.end(), split, plain_bytes.end());
        const frame_text_t cut = DecodeFrameText(with_zero);
        EXPECT_TRUE(cut.terminated);
        EXPECT_EQ(cut.text, plain.substr(0, at)) << at;

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
}

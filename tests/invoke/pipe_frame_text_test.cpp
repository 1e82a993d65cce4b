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

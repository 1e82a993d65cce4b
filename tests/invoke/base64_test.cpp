#include "invoke/base64.h"

#include <gtest/gtest.h>

namespace {

TEST(Base64, KnownVectorsCoverEveryPaddingCase) {
    const std::pair<const char*, const char*> pairs[] = {{"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},
                                                         {"foob", "Zm9vYg=="},
                                                         {"fooba", "Zm9vYmE="},
                                                         {"\xfb\xff", "+/8="}};
    for (const auto& [bytes, text] : pairs) {
        EXPECT_EQ(base64_encode(bytes), text);
        EXPECT_EQ(base64_decode(text), bytes);
    }
}

TEST(Base64, EveryByteValueSurvivesTheRoundTrip) {
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    for (std::size_t cut = 0; cut < 3; ++cut)
        EXPECT_EQ(base64_decode(base64_encode(bytes.substr(cut))), bytes.substr(cut));
}

TEST(Base64, DecoderStopsQuietlyAndKeepsWhatItHas) {
    EXPECT_EQ(base64_decode("Zm9v YmFy"), "foo");
    EXPECT_EQ(base64_decode("Zm9v\r\nYmFy"), "foo");
    EXPECT_EQ(base64_decode("Zm9vYg==Zm9v"), "foob");
    EXPECT_EQ(base64_decode("Zm9v-_"), "foo");
    EXPECT_EQ(base64_decode("Zm9v\xc3\xa9YmFy"), "foo");
    EXPECT_EQ(base64_decode("Zm9vYmE"), "fooba"); // a short last group yields what it can
    EXPECT_EQ(base64_decode("Zm9vY"), "foo");
}

} // namespace

#include "invoke/base64.h"

#include <gtest/gtest.h>

namespace {

TEST(Base64, KnownVectorsCoverEveryPaddingCaseAndEveryByteSurvivesTheRoundTrip) {
    const std::pair<const char*, const char*> pairs[] = {{"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},
                                                         {"foob", "Zm9vYg=="},
                                                         {"fooba", "Zm9vYmE="},
                                                         {"\xfb\xff", "+/8="}};
    for (const auto& [bytes, text] : pairs) {
        EXPECT_EQ(wrap::base64_encode(bytes), text);
        EXPECT_EQ(wrap::base64_decode(text), bytes);
    }
    // Every byte value survives the round trip.
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    for (std::size_t cut = 0; cut < 3; ++cut)
        EXPECT_EQ(wrap::base64_decode(wrap::base64_encode(bytes.substr(cut))), bytes.substr(cut));
}

TEST(Base64, DecoderStopsQuietlyAtABreakAnywhereAndKeepsExactlyWhatCameBefore) {
    EXPECT_EQ(wrap::base64_decode("Zm9v YmFy"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9v\r\nYmFy"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9vYg==Zm9v"), "foob");
    EXPECT_EQ(wrap::base64_decode("Zm9v-_"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9v\xc3\xa9YmFy"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9vYmE"), "fooba"); // a short last group yields what it can
    EXPECT_EQ(wrap::base64_decode("Zm9vY"), "foo");
    // Whole groups take a faster road than the last ones: a break must count wherever it falls.
    std::string bytes;
    for (int i = 0; i < 60; ++i)
        bytes += static_cast<char>(i * 37);
    const std::string text = wrap::base64_encode(bytes);
    for (std::size_t at = 0; at <= text.size(); ++at) {
        const std::string decoded = wrap::base64_decode(text.substr(0, at) + "!" + text.substr(at));
        EXPECT_EQ(decoded, wrap::base64_decode(text.substr(0, at))) << at;
        EXPECT_EQ(decoded, bytes.substr(0, at * 3 / 4)) << at;
    }
}

} // namespace

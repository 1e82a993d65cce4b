#include "invoke/base64.h"

#include <gtest/gtest.h>

namespace {

struct known_pair_t {
    const char* bytes;
    const char* text;
};

// The standard test vectors cover every padding case.
const known_pair_t known_pairs[] = {{"", ""},
                                    {"f", "Zg=="},
                                    {"fo", "Zm8="},
                                    {"foo", "Zm9v"},
                                    {"foob", "Zm9vYg=="},
                                    {"fooba", "Zm9vYmE="},
                                    {"foobar", "Zm9vYmFy"}};

TEST(Base64, EncodesKnownVectorsWithPadding) {
    for (const known_pair_t& pair : known_pairs)
        EXPECT_EQ(base64_encode(pair.bytes), pair.text) << pair.bytes;
}

TEST(Base64, DecodesKnownVectors) {
    for (const known_pair_t& pair : known_pairs)
        EXPECT_EQ(base64_decode(pair.text), pair.bytes) << pair.text;
}

TEST(Base64, EveryByteValueSurvivesTheRoundTrip) {
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    for (std::size_t length = 0; length <= bytes.size(); length += 37) {
        const std::string part = bytes.substr(bytes.size() - length);
        EXPECT_EQ(base64_decode(base64_encode(part)), part) << length;
    }
    EXPECT_EQ(base64_encode(std::string("\xfb\xff", 2)), "+/8=");
}

TEST(Base64, EncoderWritesNoLineBreaks) {
    const std::string encoded = base64_encode(std::string(1000, 'x'));
    EXPECT_EQ(encoded.find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(encoded.size(), 1336u);
}

TEST(Base64, DecoderStopsQuietlyAtTheFirstCharacterItCannotUse) {
    EXPECT_EQ(base64_decode("Zm9v YmFy"), "foo");
    EXPECT_EQ(base64_decode("Zm9v\r\nYmFy"), "foo");
    EXPECT_EQ(base64_decode("Zm9vYg==Zm9v"), "foob");
    EXPECT_EQ(base64_decode("Zm9v=YmFy"), "foo");
    EXPECT_EQ(base64_decode("Zm9v-_"), "foo");
    EXPECT_EQ(base64_decode("Zm9v\xc3\xa9YmFy"), "foo");
    EXPECT_EQ(base64_decode("!Zm9v"), "");
}

TEST(Base64, ShortLastGroupYieldsWhatItCan) {
    EXPECT_EQ(base64_decode("Zm9vYg"), "foob");
    EXPECT_EQ(base64_decode("Zm9vYmE"), "fooba");
    EXPECT_EQ(base64_decode("Zm9vY"), "foo");
}

} // namespace

// Base64 both ways: any text decodes without failure, and whatever is encoded decodes back.
#include "fuzz/fuzz_input.h"
#include "invoke/base64.h"

namespace {

bool is_in_alphabet(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// The run of alphabet characters the decoder reads before it stops.
std::size_t decoded_prefix_length(const std::string& text) {
    std::size_t length = 0;
    while (length < text.size() && is_in_alphabet(text[length]))
        ++length;
    return length;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(fuzz::bytes_of(data, size));

    const std::string encoded = wrap::base64_encode(input);
    fuzz::require(encoded.size() == (input.size() + 2) / 3 * 4, "encoding pads to whole groups of four");
    fuzz::require(decoded_prefix_length(encoded) + 2 >= encoded.size(), "only padding follows the alphabet");
    fuzz::require(wrap::base64_decode(encoded) == input, "decoding restores what was encoded");

    const std::string decoded = wrap::base64_decode(input);
    const std::size_t used = decoded_prefix_length(input);
    fuzz::require(decoded.size() == used * 3 / 4, "every six bits read give their share of bytes");
    if (used % 4 == 0)
        fuzz::require(wrap::base64_encode(decoded) == input.substr(0, used),
                      "whole groups encode back to their text");
    return 0;
}

#include "invoke/base64.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace wrap {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int8_t not_in_alphabet = -1;

constexpr std::array<std::int8_t, 256> make_decoding_table() {
    std::array<std::int8_t, 256> table{};
    for (auto& entry : table)
        entry = not_in_alphabet;
    for (int i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
    return table;
}

constexpr std::array<std::int8_t, 256> decoding_table = make_decoding_table();

// The value of a character already shifted to its place in a group of four, one table per
// place. A character outside the alphabet sets the top bit, so that one test covers the group.
constexpr std::uint32_t outside_alphabet = 0x80000000u;

constexpr std::array<std::uint32_t, 256> make_placed_table(int shift) {
    std::array<std::uint32_t, 256> table{};
    for (int c = 0; c < 256; ++c)
        table[c] = decoding_table[c] == not_in_alphabet
                       ? outside_alphabet
                       : static_cast<std::uint32_t>(decoding_table[c]) << shift;
    return table;
}

constexpr std::array<std::uint32_t, 256> placed_first = make_placed_table(18);
constexpr std::array<std::uint32_t, 256> placed_second = make_placed_table(12);
constexpr std::array<std::uint32_t, 256> placed_third = make_placed_table(6);
constexpr std::array<std::uint32_t, 256> placed_fourth = make_placed_table(0);

// The two characters of every 12 bits: a group of three bytes takes two look-ups.
constexpr std::array<char, 2 * 4096> make_pair_table() {
    std::array<char, 2 * 4096> table{};
    for (int i = 0; i < 4096; ++i) {
        table[2 * i] = alphabet[i >> 6];
        table[2 * i + 1] = alphabet[i & 63];
    }
    return table;
}

constexpr std::array<char, 2 * 4096> pair_table = make_pair_table();

char* put_pair(char* out, std::uint32_t twelve_bits) {
    std::memcpy(out, pair_table.data() + 2 * twelve_bits, 2);
    return out + 2;
}

} // namespace

// Both directions write into storage sized up front: documents of several
// megabytes pass through here.
std::string base64_encode(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, '=');
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    char* out = text.data();
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t group = (in[i] << 16) | (in[i + 1] << 8) | in[i + 2];
        out = put_pair(put_pair(out, group >> 12), group & 4095);
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        const std::uint32_t group = (in[i] << 16) | (rest == 2 ? in[i + 1] << 8 : 0);
        out[0] = alphabet[(group >> 18) & 63];
        out[1] = alphabet[(group >> 12) & 63];
        if (rest == 2)
            out[2] = alphabet[(group >> 6) & 63];
    }
    return text;
}

std::string base64_decode(std::string_view text) {
    std::string bytes(text.size() / 4 * 3 + 2, '\0');
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    char* out = bytes.data();
    // Whole groups of four while all of them are in the alphabet; the careful loop below
    // takes over at the first group that is not.
    std::size_t i = 0;
    for (; i + 4 <= text.size(); i += 4) {
        const std::uint32_t group = placed_first[in[i]] | placed_second[in[i + 1]] | placed_third[in[i + 2]] |
                                    placed_fourth[in[i + 3]];
        if ((group & outside_alphabet) != 0)
            break;
        out[0] = static_cast<char>(group >> 16);
        out[1] = static_cast<char>(group >> 8);
        out[2] = static_cast<char>(group);
        out += 3;
    }
    std::uint32_t group = 0;
    int count = 0;
    for (; i < text.size(); ++i) {
        const std::int8_t value = decoding_table[in[i]];
        if (value == not_in_alphabet)
            break; // '=' included: whatever came before is the result
        group = (group << 6) | static_cast<std::uint32_t>(value);
        if (++count == 4) {
            *out++ = static_cast<char>(group >> 16);
            *out++ = static_cast<char>(group >> 8);
            *out++ = static_cast<char>(group);
            group = 0;
            count = 0;
        }
    }
    if (count == 2) {
        *out++ = static_cast<char>(group >> 4);
    } else if (count == 3) {
        *out++ = static_cast<char>(group >> 10);
        *out++ = static_cast<char>(group >> 2);
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
    return bytes;
}

} // namespace wrap

#include "invoke/base64.h"

#include <array>
#include <cstdint>

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

} // namespace

// Both directions write into storage sized up front: documents of several
// megabytes pass through here.
std::string base64_encode(const std::string& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, '=');
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    char* out = text.data();
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3, out += 4) {
        const std::uint32_t group = (in[i] << 16) | (in[i + 1] << 8) | in[i + 2];
        out[0] = alphabet[(group >> 18) & 63];
        out[1] = alphabet[(group >> 12) & 63];
        out[2] = alphabet[(group >> 6) & 63];
        out[3] = alphabet[group & 63];
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

std::string base64_decode(const std::string& text) {
    std::string bytes(text.size() / 4 * 3 + 2, '\0');
    char* out = bytes.data();
    std::uint32_t group = 0;
    int count = 0;
    for (const char c : text) {
        const std::int8_t value = decoding_table[static_cast<unsigned char>(c)];
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

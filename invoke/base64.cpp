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

std::string base64_encode(const std::string& bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t group = (data[i] << 16) | (data[i + 1] << 8) | data[i + 2];
        text += alphabet[(group >> 18) & 63];
        text += alphabet[(group >> 12) & 63];
        text += alphabet[(group >> 6) & 63];
        text += alphabet[group & 63];
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        const std::uint32_t group = (data[i] << 16) | (rest == 2 ? data[i + 1] << 8 : 0);
        text += alphabet[(group >> 18) & 63];
        text += alphabet[(group >> 12) & 63];
        text += rest == 2 ? alphabet[(group >> 6) & 63] : '=';
        text += '=';
    }
    return text;
}

std::string base64_decode(const std::string& text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t group = 0;
    int count = 0;
    for (const char c : text) {
        const std::int8_t value = decoding_table[static_cast<unsigned char>(c)];
        if (value == not_in_alphabet)
            break; // '=' included: whatever came before is the result
        group = (group << 6) | static_cast<std::uint32_t>(value);
        if (++count == 4) {
            bytes += static_cast<char>(group >> 16);
            bytes += static_cast<char>(group >> 8);
            bytes += static_cast<char>(group);
            group = 0;
            count = 0;
        }
    }
    if (count == 2) {
        bytes += static_cast<char>(group >> 4);
    } else if (count == 3) {
        bytes += static_cast<char>(group >> 10);
        bytes += static_cast<char>(group >> 2);
    }
    return bytes;
}

// One character at a time between UTF-32 and UTF-8. Both the common library's code page
// conversions and the simulated host (which stands below that library) build on these; what
// each does with a sequence that fails to decode is its own choice.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace compat::utf8 {

inline bool is_scalar_value(std::uint32_t c) {
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

inline std::size_t encoded_length(std::uint32_t c) {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
}

// Writes the encoding of c at out, encoded_length(c) bytes; where the writing ended.
inline char* put(char* out, std::uint32_t c) {
    if (c < 0x80) {
        *out++ = static_cast<char>(c);
    } else if (c < 0x800) {
        *out++ = static_cast<char>(0xC0 | (c >> 6));
        *out++ = static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *out++ = static_cast<char>(0xE0 | (c >> 12));
        *out++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        *out++ = static_cast<char>(0x80 | (c & 0x3F));
    } else {
        *out++ = static_cast<char>(0xF0 | (c >> 18));
        *out++ = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        *out++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        *out++ = static_cast<char>(0x80 | (c & 0x3F));
    }
    return out;
}

struct sequence_t {
    std::size_t length;
    std::uint32_t lead_bits;
    std::uint32_t minimum; // smaller values are overlong forms
};

inline std::optional<sequence_t> sequence_of(unsigned char lead) {
    if (lead < 0x80)
        return sequence_t{1, lead, 0};
    if ((lead & 0xE0) == 0xC0)
        return sequence_t{2, lead & 0x1Fu, 0x80};
    if ((lead & 0xF0) == 0xE0)
        return sequence_t{3, lead & 0x0Fu, 0x800};
    if ((lead & 0xF8) == 0xF0)
        return sequence_t{4, lead & 0x07u, 0x10000};
    return std::nullopt;
}

// Decodes the sequence at text[pos] and moves pos past it; nullopt, pos left alone, when the
// sequence is malformed, truncated, overlong or no scalar value.
inline std::optional<std::uint32_t> decode_at(std::string_view text, std::size_t& pos) {
    const std::optional<sequence_t> seq = sequence_of(static_cast<unsigned char>(text[pos]));
    if (!seq || text.size() - pos < seq->length)
        return std::nullopt;
    std::uint32_t c = seq->lead_bits;
    for (std::size_t i = 1; i < seq->length; ++i) {
        const auto next = static_cast<unsigned char>(text[pos + i]);
        if ((next & 0xC0) != 0x80)
            return std::nullopt;
        c = (c << 6) | (next & 0x3Fu);
    }
    if (c < seq->minimum || !is_scalar_value(c))
        return std::nullopt;
    pos += seq->length;
    return c;
}

} // namespace compat::utf8

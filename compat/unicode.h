// One character at a time out of and into UTF-8, UTF-16 or UTF-32 units, the way the system's
// conversions read text when they are given no flags: they never fail, and what is not
// well-formed stands as U+FFFD. Every reader of text that has to agree with those conversions
// (the code-page conversions, the DOM, the frames, the simulated host) decodes through these, so
// that one bad sequence yields the same replacement wherever it is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace compat {

inline constexpr char32_t replacement_character = 0xFFFD;

struct decoded_t {
    char32_t value;    // a Unicode scalar value, or the replacement character
    std::size_t units; // how many units of the input it took, at least one
    bool well_formed;  // false where value stands in for a sequence that is not
};

inline bool is_high_surrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

inline bool is_low_surrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

inline bool is_scalar_value(std::uint32_t c) {
    return c <= 0x10FFFF && !is_high_surrogate(c) && !is_low_surrogate(c);
}

// A UTF-32 unit that is a surrogate or lies above U+10FFFF is read as the replacement character.
inline char32_t scalar_or_replacement(std::uint32_t c) {
    return is_scalar_value(c) ? static_cast<char32_t>(c) : replacement_character;
}

inline char32_t from_surrogates(std::uint32_t high, std::uint32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// The UTF-16 units of c, handed to put_unit: one below U+10000, else a surrogate pair.
template <class PutUnit> void put_utf16(char32_t c, PutUnit&& put_unit) {
    if (c < 0x10000) {
        put_unit(c);
        return;
    }
    c -= 0x10000;
    put_unit(0xD800 + (c >> 10));
    put_unit(0xDC00 + (c & 0x3FF));
}

inline std::size_t utf8_length(char32_t c) {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
}

// Writes the encoding of c at out, utf8_length(c) bytes; where the writing ended.
inline char* put_utf8(char* out, char32_t c) {
    const std::size_t length = utf8_length(c);
    static constexpr unsigned char leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (std::size_t i = length - 1; i > 0; --i, c >>= 6)
        out[i] = static_cast<char>(0x80 | (c & 0x3F));
    out[0] = static_cast<char>(length == 1 ? c : leads[length] | c);
    return out + length;
}

// The character at the start of text, which must not be empty. A sequence that is not
// well-formed gives one replacement character for its maximal subpart: the longest start of a
// well-formed sequence that it has, or its first byte alone when no well-formed sequence starts
// there. So a truncated sequence costs one character, a stray continuation byte one each, and
// the bytes behind are read afresh.
inline decoded_t decode_utf8(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80)
        return {lead, 1, true};
    std::size_t length = 0;
    char32_t value = 0;
    // The range of the second byte narrows where the lead alone would allow overlong forms,
    // surrogates or values above U+10FFFF; every later byte is a plain continuation.
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0Fu;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07u;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return {replacement_character, 1, false};
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i == text.size())
            return {replacement_character, i, false};
        const auto next = static_cast<unsigned char>(text[i]);
        if (next < low || next > high)
            return {replacement_character, i, false};
        value = (value << 6) | (next & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {value, length, true};
}

// The character at the start of text, which must not be empty. A surrogate pair gives one
// character; a surrogate without its partner gives the replacement character and takes one unit.
inline decoded_t decode_utf16(std::u16string_view text) {
    const char16_t unit = text[0];
    if (!is_high_surrogate(unit) && !is_low_surrogate(unit))
        return {unit, 1, true};
    if (is_high_surrogate(unit) && text.size() > 1 && is_low_surrogate(text[1]))
        return {from_surrogates(unit, text[1]), 2, true};
    return {replacement_character, 1, false};
}

} // namespace compat

// Runs of ASCII text at the start of a text, taken a block at a time. POSIX only: the
// conversions and the DOM over pugixml build on these.
#pragma once

#include "compat/text_blocks.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace format {

inline constexpr std::size_t block = compat::block;

inline bool is_ascii_block(const wchar_t* text) {
    return compat::any_bits(text) < 0x80;
}

inline bool is_ascii_block(const char* bytes) {
    return compat::bytes_outside(bytes, 0, 0x7F) == 0;
}

// The length of the text's leading ASCII, narrowed into out (room for the whole text).
inline std::size_t narrow_prefix(std::wstring_view text, char* out) {
    std::size_t pos = 0;
    for (; text.size() - pos >= block; pos += block) {
        compat::narrow_wide(text.data() + pos, out + pos);
        if (!is_ascii_block(out + pos))
            break;
    }
    for (; pos < text.size() && static_cast<std::uint32_t>(text[pos]) < 0x80; ++pos)
        out[pos] = static_cast<char>(text[pos]);
    return pos;
}

// The length of the text's leading ASCII, widened into out (room for the whole text).
inline std::size_t widen_prefix(std::string_view text, wchar_t* out) {
    std::size_t pos = 0;
    for (; text.size() - pos >= block && is_ascii_block(text.data() + pos); pos += block)
        compat::convert(out + pos, text.data() + pos);
    for (; pos < text.size() && static_cast<unsigned char>(text[pos]) < 0x80; ++pos)
        out[pos] = static_cast<wchar_t>(text[pos]);
    return pos;
}

} // namespace format

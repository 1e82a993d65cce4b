// Runs of ASCII text, taken a block at a time: nearly all text that crosses the pipe is ASCII,
// whole documents of it. The loops have a fixed length and go through local arrays (as far as
// the compiler knows, output could alias input), so that a block takes a few vector steps.
// POSIX only: the conversions and the DOM over pugixml build on these.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace format_impl::ascii {

// Characters looked at together; a block that holds anything else goes character by character.
inline constexpr std::size_t block = 16;

inline bool is_ascii_block(const wchar_t* text) {
    std::uint32_t any = 0;
    for (std::size_t i = 0; i < block; ++i)
        any |= static_cast<std::uint32_t>(text[i]);
    return any < 0x80;
}

inline bool is_ascii_block(const char* bytes) {
#if defined(__SSE2__)
    // Where the machine has vectors, the top bits of the block's bytes are one mask.
    return _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))) == 0;
#else
    unsigned char any = 0;
    for (std::size_t i = 0; i < block; ++i)
        any |= static_cast<unsigned char>(bytes[i]);
    return any < 0x80;
#endif
}

// Converts a block that is all ASCII; where the writing ended.
template <typename To, typename From> To* put_block(To* out, const From* in) {
    From copy[block];
    std::copy_n(in, block, copy);
    To converted[block];
    for (std::size_t i = 0; i < block; ++i)
        converted[i] = static_cast<To>(copy[i]);
    return std::copy_n(converted, block, out);
}

// Narrows the block into out when it is all ASCII; false, with out written but not to be
// used, when it is not.
inline bool narrow_block(const wchar_t* in, char* out) {
    wchar_t copy[block];
    std::copy_n(in, block, copy);
    std::uint32_t any = 0;
    char narrowed[block];
    for (std::size_t i = 0; i < block; ++i) {
        any |= static_cast<std::uint32_t>(copy[i]);
        narrowed[i] = static_cast<char>(copy[i]);
    }
    std::copy_n(narrowed, block, out);
    return any < 0x80;
}

// The length of the text's leading ASCII, narrowed into out (room for the whole text).
inline std::size_t narrow_prefix(std::wstring_view text, char* out) {
    std::size_t pos = 0;
    while (text.size() - pos >= block && narrow_block(text.data() + pos, out + pos))
        pos += block;
    while (pos < text.size() && static_cast<std::uint32_t>(text[pos]) < 0x80) {
        out[pos] = static_cast<char>(text[pos]);
        ++pos;
    }
    return pos;
}

// The length of the text's leading ASCII, widened into out (room for the whole text).
inline std::size_t widen_prefix(std::string_view text, wchar_t* out) {
    std::size_t pos = 0;
    while (text.size() - pos >= block && is_ascii_block(text.data() + pos)) {
        put_block(out + pos, text.data() + pos);
        pos += block;
    }
    while (pos < text.size() && static_cast<unsigned char>(text[pos]) < 0x80) {
        out[pos] = static_cast<wchar_t>(text[pos]);
        ++pos;
    }
    return pos;
}

inline bool is_ascii(std::string_view text) {
    std::size_t pos = 0;
    while (text.size() - pos >= block && is_ascii_block(text.data() + pos))
        pos += block;
    for (; pos < text.size(); ++pos)
        if (static_cast<unsigned char>(text[pos]) >= 0x80)
            return false;
    return true;
}

} // namespace format_impl::ascii

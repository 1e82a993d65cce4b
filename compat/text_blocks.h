// Text taken a block at a time: nearly all text that crosses the pipe, the DOM and the code-page
// conversions is plain ASCII, whole documents of it, and a block takes a few vector steps where
// a character at a time would take sixteen. Every test of a block is a bit mask, bit i for the
// block's character i, so that a caller finds the first that needs care by counting zeros. The
// machine's vectors are used here and nowhere else; every other machine gets loops of a fixed
// length through local arrays, which the compiler can vectorise as it sees fit.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace compat {

inline constexpr std::size_t block = 16;

#if defined(__SSE2__)
inline __m128i load(const void* at) {
    return _mm_loadu_si128(static_cast<const __m128i*>(at));
}
inline void store(void* at, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(at), value);
}
#endif

// Bytes that lie outside [low, high], read without sign.
inline unsigned bytes_outside(const char* bytes, unsigned char low, unsigned char high) {
#if defined(__SSE2__)
    const __m128i v = load(bytes);
    const __m128i inside =
        _mm_and_si128(_mm_cmpeq_epi8(_mm_max_epu8(v, _mm_set1_epi8(static_cast<char>(low))), v),
                      _mm_cmpeq_epi8(_mm_min_epu8(v, _mm_set1_epi8(static_cast<char>(high))), v));
    return ~static_cast<unsigned>(_mm_movemask_epi8(inside)) & 0xFFFFu;
#else
    unsigned mask = 0;
    for (std::size_t i = 0; i < block; ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        mask |= (b < low || b > high) ? 1u << i : 0u;
    }
    return mask;
#endif
}

// Bytes that are one of Set.
template <unsigned char... Set> unsigned bytes_among(const char* bytes) {
#if defined(__SSE2__)
    const __m128i v = load(bytes);
    __m128i hits = _mm_setzero_si128();
    ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(Set))))), ...);
    return static_cast<unsigned>(_mm_movemask_epi8(hits));
#else
    unsigned mask = 0;
    for (std::size_t i = 0; i < block; ++i)
        mask |= ((static_cast<unsigned char>(bytes[i]) == Set) || ...) ? 1u << i : 0u;
    return mask;
#endif
}

// The bits of all the block's units together: the block is all below a power of two where this is.
template <class Unit> std::uint32_t any_bits(const Unit* text) {
    std::uint32_t any = 0;
    for (std::size_t i = 0; i < block; ++i)
        any |= static_cast<std::uint32_t>(text[i]);
    return any;
}

// Each unit cast to the other type; where the writing ended.
template <class To, class From> To* convert(To* out, const From* in) {
    From copy[block];
    std::copy_n(in, block, copy);
    To converted[block];
    for (std::size_t i = 0; i < block; ++i)
        converted[i] = static_cast<To>(copy[i]);
    return std::copy_n(converted, block, out);
}

// Wide characters as bytes: ASCII as it stands, every other character as 0x80, so that a test
// of the bytes is a test of the characters.
inline void narrow_wide(const wchar_t* text, char* out) {
#if defined(__SSE2__)
    if constexpr (sizeof(wchar_t) == 4) {
        __m128i quarters[4];
        for (std::size_t i = 0; i < 4; ++i) {
            const __m128i units = load(text + 4 * i);
            const __m128i other = _mm_or_si128(_mm_cmpgt_epi32(units, _mm_set1_epi32(0x7F)),
                                               _mm_cmplt_epi32(units, _mm_setzero_si128()));
            quarters[i] =
                _mm_or_si128(_mm_andnot_si128(other, units), _mm_and_si128(other, _mm_set1_epi32(0x80)));
        }
        store(out, _mm_packus_epi16(_mm_packs_epi32(quarters[0], quarters[1]),
                                    _mm_packs_epi32(quarters[2], quarters[3])));
        return;
    }
#endif
    wchar_t copy[block];
    std::copy_n(text, block, copy);
    char narrowed[block];
    for (std::size_t i = 0; i < block; ++i) {
        const auto unit = static_cast<std::uint32_t>(copy[i]);
        narrowed[i] = static_cast<char>(unit < 0x80 ? unit : 0x80);
    }
    std::copy_n(narrowed, block, out);
}

// Little-endian UTF-16 units as bytes: a unit below 0x100 as it stands, one from 0x100 to 0x7FFF
// as 0xFF, and one from 0x8000 up as zero.
inline void narrow_units(const std::uint8_t* units, char* out) {
#if defined(__SSE2__)
    store(out, _mm_packus_epi16(load(units), load(units + 16)));
#else
    char narrowed[block];
    for (std::size_t i = 0; i < block; ++i) {
        const unsigned unit = units[2 * i] | units[2 * i + 1] << 8;
        narrowed[i] = static_cast<char>(unit >= 0x8000 ? 0 : unit > 0xFF ? 0xFF : unit);
    }
    std::copy_n(narrowed, block, out);
#endif
}

// Bytes as little-endian UTF-16 units, 2 * block bytes of them.
inline void widen_to_units(const char* bytes, std::uint8_t* out) {
#if defined(__SSE2__)
    const __m128i v = load(bytes);
    store(out, _mm_unpacklo_epi8(v, _mm_setzero_si128()));
    store(out + 16, _mm_unpackhi_epi8(v, _mm_setzero_si128()));
#else
    std::uint8_t units[2 * block];
    for (std::size_t i = 0; i < block; ++i) {
        units[2 * i] = static_cast<std::uint8_t>(bytes[i]);
        units[2 * i + 1] = 0;
    }
    std::copy_n(units, 2 * block, out);
#endif
}

} // namespace compat

#include "invoke/pipe_text.h"

#include "compat/text_blocks.h"
#include "compat/unicode.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

namespace win::pipes {

namespace {

constexpr bool wide_is_utf16 = sizeof(wchar_t) == 2;
// Frames run to megabytes of plain text: blocks of this many units that need no care (no zero,
// no surrogate, nothing beyond one unit) are copied in a few vector steps.
constexpr std::size_t plain_block = compat::block;

char16_t unit_at(const byte_buffer_t& bytes, std::size_t index) {
    return static_cast<char16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
}

std::uint8_t* put_unit(std::uint8_t* out, char32_t unit) {
    out[0] = static_cast<std::uint8_t>(unit & 0xFF);
    out[1] = static_cast<std::uint8_t>((unit >> 8) & 0xFF);
    return out + 2;
}

char32_t encodable(wchar_t character) {
    const auto code_point = static_cast<char32_t>(character);
    if (wide_is_utf16)
        return code_point & 0xFFFF;
    return code_point > 0x10FFFF ? compat::replacement_character : code_point;
}

std::uint8_t* put_code_point(std::uint8_t* out, char32_t code_point) {
    compat::put_utf16(code_point, [&out](char32_t unit) { out = put_unit(out, unit); });
    return out;
}

// The blocks go through local arrays: as far as the compiler knows, bytes could alias the text.

// Units of the block at unit index `first`, or false when one of them is a zero or, where wide
// text is UTF-32, a surrogate that may need pairing.
bool plain_units_at(const byte_buffer_t& bytes, std::size_t first, char16_t (&units)[plain_block]) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(units, bytes.data() + 2 * first, sizeof units);
    } else {
        std::uint8_t block[2 * plain_block];
        std::copy_n(bytes.data() + 2 * first, 2 * plain_block, block);
        for (std::size_t i = 0; i < plain_block; ++i)
            units[i] = static_cast<char16_t>(block[2 * i] | block[2 * i + 1] << 8);
    }
    unsigned needs_care = 0;
    for (const char16_t unit : units)
        needs_care |= (unit == 0 ? 1u : 0u) | (!wide_is_utf16 && (unit & 0xF800) == 0xD800 ? 1u : 0u);
    return needs_care == 0;
}

bool is_single_unit_block(const wchar_t* text) {
    return wide_is_utf16 || compat::any_bits(text) < 0x10000;
}

std::uint8_t* put_single_unit_block(std::uint8_t* out, const wchar_t* text) {
    char16_t units[plain_block];
    compat::convert(units, text);
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out, units, sizeof units);
        return out + sizeof units;
    }
    for (const char16_t unit : units)
        out = put_unit(out, unit);
    return out;
}

// Units of the text with its closing U+0000.
std::size_t frame_units_of(std::wstring_view text) {
    std::size_t units = text.size() + 1;
    std::size_t pos = 0;
    while (pos < text.size()) {
        if (text.size() - pos >= plain_block && is_single_unit_block(text.data() + pos)) {
            pos += plain_block;
            continue;
        }
        units += encodable(text[pos++]) >= 0x10000 ? 1 : 0;
    }
    return units;
}

} // namespace

frame_text_t DecodeFrameText(const byte_buffer_t& bytes) {
    frame_text_t frame;
    const std::size_t units = bytes.size() / 2;
    frame.text.resize(units);
    wchar_t* out = frame.text.data();
    std::size_t i = 0;
    while (i < units) {
        char16_t block[plain_block];
        if (units - i >= plain_block && plain_units_at(bytes, i, block)) {
            out = std::copy_n(block, plain_block, out);
            i += plain_block;
            continue;
        }
        const char32_t unit = unit_at(bytes, i++);
        if (unit == 0) {
            frame.terminated = true;
            break;
        }
        if (!wide_is_utf16 && compat::is_high_surrogate(unit) && i < units &&
            compat::is_low_surrogate(unit_at(bytes, i))) {
            *out++ = static_cast<wchar_t>(compat::from_surrogates(unit, unit_at(bytes, i++)));
            continue;
        }
        *out++ = static_cast<wchar_t>(unit);
    }
    frame.text.resize(static_cast<std::size_t>(out - frame.text.data()));
    return frame;
}

byte_buffer_t EncodeFrameText(const std::wstring& text) {
    // Sized up front (responses run to megabytes) for one unit per character, which nearly
    // every text needs; the first character that takes two sizes the frame again from there.
    byte_buffer_t bytes(2 * (text.size() + 1));
    bool sized_exactly = false;
    std::size_t written = 0;
    std::size_t pos = 0;
    while (pos < text.size()) {
        if (text.size() - pos >= plain_block && is_single_unit_block(text.data() + pos)) {
            put_single_unit_block(bytes.data() + written, text.data() + pos);
            written += 2 * plain_block;
            pos += plain_block;
            continue;
        }
        const char32_t code_point = encodable(text[pos]);
        if (code_point >= 0x10000 && !sized_exactly) {
            bytes.resize(written + 2 * frame_units_of(std::wstring_view(text).substr(pos)));
            sized_exactly = true;
        }
        written = static_cast<std::size_t>(put_code_point(bytes.data() + written, code_point) - bytes.data());
        ++pos;
    }
    put_unit(bytes.data() + written, 0);
    return bytes;
}

} // namespace win::pipes

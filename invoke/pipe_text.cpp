#include "invoke/pipe_text.h"

namespace win::pipes {

namespace {

constexpr char32_t replacement_character = 0xFFFD;
constexpr bool wide_is_utf16 = sizeof(wchar_t) == 2;

bool is_high_surrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool is_low_surrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

char16_t unit_at(const byte_buffer_t& bytes, std::size_t index) {
    return static_cast<char16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
}

void append_unit(byte_buffer_t& bytes, char32_t unit) {
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>((unit >> 8) & 0xFF));
}

void append_code_point(byte_buffer_t& bytes, char32_t code_point) {
    if (code_point > 0x10FFFF)
        code_point = replacement_character;
    if (code_point < 0x10000) {
        append_unit(bytes, code_point);
        return;
    }
    code_point -= 0x10000;
    append_unit(bytes, 0xD800 + (code_point >> 10));
    append_unit(bytes, 0xDC00 + (code_point & 0x3FF));
}

} // namespace

frame_text_t DecodeFrameText(const byte_buffer_t& bytes) {
    frame_text_t frame;
    const std::size_t units = bytes.size() / 2;
    frame.text.reserve(units);
    for (std::size_t i = 0; i < units; ++i) {
        const char32_t unit = unit_at(bytes, i);
        if (unit == 0) {
            frame.terminated = true;
            break;
        }
        if (!wide_is_utf16 && is_high_surrogate(unit) && i + 1 < units &&
            is_low_surrogate(unit_at(bytes, i + 1))) {
            const char32_t low = unit_at(bytes, ++i);
            frame.text.push_back(static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00)));
            continue;
        }
        frame.text.push_back(static_cast<wchar_t>(unit));
    }
    return frame;
}

byte_buffer_t EncodeFrameText(const std::wstring& text) {
    byte_buffer_t bytes;
    bytes.reserve(2 * text.size() + 2);
    for (const wchar_t character : text) {
        if (wide_is_utf16)
            append_unit(bytes, static_cast<char16_t>(character));
        else
            append_code_point(bytes, static_cast<char32_t>(character));
    }
    append_unit(bytes, 0);
    return bytes;
}

} // namespace win::pipes

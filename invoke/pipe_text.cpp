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

std::uint8_t* put_unit(std::uint8_t* out, char32_t unit) {
    out[0] = static_cast<std::uint8_t>(unit & 0xFF);
    out[1] = static_cast<std::uint8_t>((unit >> 8) & 0xFF);
    return out + 2;
}

char32_t encodable(wchar_t character) {
    const auto code_point = static_cast<char32_t>(character);
    if (wide_is_utf16)
        return code_point & 0xFFFF;
    return code_point > 0x10FFFF ? replacement_character : code_point;
}

std::uint8_t* put_code_point(std::uint8_t* out, char32_t code_point) {
    if (code_point < 0x10000)
        return put_unit(out, code_point);
    code_point -= 0x10000;
    out = put_unit(out, 0xD800 + (code_point >> 10));
    return put_unit(out, 0xDC00 + (code_point & 0x3FF));
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
    // Sized first: responses run to megabytes, and growing byte by byte shows.
    std::size_t units = text.size() + 1;
    for (const wchar_t character : text)
        units += encodable(character) >= 0x10000 ? 1 : 0;
    byte_buffer_t bytes(2 * units);
    std::uint8_t* out = bytes.data();
    for (const wchar_t character : text)
        out = put_code_point(out, encodable(character));
    put_unit(out, 0);
    return bytes;
}

} // namespace win::pipes

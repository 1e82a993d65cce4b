// The canonical 8-4-4-4-12 form, read as strictly as the system's RPC runtime reads it.
#include "common/format/guid_codec.h"

#include <cstdio>

namespace format_impl {

namespace {

const std::uint32_t invalid_string_uuid = 1705;
const std::size_t uuid_text_length = 36;

bool is_hyphen_position(std::size_t i) {
    return i == 8 || i == 13 || i == 18 || i == 23;
}

int hex_value(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

// The 32 hex digits in text order, or false when the text is no UUID.
bool read_nibbles(const std::wstring& text, std::uint8_t (&nibbles)[32]) {
    if (text.size() != uuid_text_length)
        return false;
    std::size_t n = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (is_hyphen_position(i)) {
            if (text[i] != L'-')
                return false;
            continue;
        }
        const int value = hex_value(text[i]);
        if (value < 0)
            return false;
        nibbles[n++] = static_cast<std::uint8_t>(value);
    }
    return true;
}

std::uint64_t number_at(const std::uint8_t (&nibbles)[32], std::size_t first, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = first; i < first + count; ++i)
        value = (value << 4) | nibbles[i];
    return value;
}

} // namespace

std::wstring uuid_to_text(const GUID& guid) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1],
                  guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    const std::string text(buffer);
    return std::wstring(text.begin(), text.end());
}

std::uint32_t uuid_from_text(const std::wstring& text, GUID& guid) {
    std::uint8_t nibbles[32];
    if (!read_nibbles(text, nibbles))
        return invalid_string_uuid;
    guid.Data1 = static_cast<std::uint32_t>(number_at(nibbles, 0, 8));
    guid.Data2 = static_cast<std::uint16_t>(number_at(nibbles, 8, 4));
    guid.Data3 = static_cast<std::uint16_t>(number_at(nibbles, 12, 4));
    for (std::size_t i = 0; i < 8; ++i)
        guid.Data4[i] = static_cast<std::uint8_t>(number_at(nibbles, 16 + 2 * i, 2));
    return 0;
}

} // namespace format_impl

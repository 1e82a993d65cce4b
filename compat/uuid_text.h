// The 8-4-4-4-12 text form of a GUID, read as strictly as the system's RPC runtime reads it.
// Shared by the common library's POSIX side and the simulated host, which stands below it.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace compat {

namespace detail {

inline int hex_value(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

inline bool read_hex(std::wstring_view text, std::size_t pos, std::size_t digits, std::uint64_t& value) {
    value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        const int v = hex_value(text[pos + i]);
        if (v < 0)
            return false;
        value = (value << 4) | static_cast<unsigned>(v);
    }
    return true;
}

} // namespace detail

// Exactly 36 characters, hex digits of any case, no braces; nullopt for anything else.
inline std::optional<GUID> parse_uuid_text(std::wstring_view text) {
    using detail::read_hex;
    if (text.size() != 36 || text[8] != L'-' || text[13] != L'-' || text[18] != L'-' || text[23] != L'-')
        return std::nullopt;
    GUID id{};
    std::uint64_t v = 0;
    if (!read_hex(text, 0, 8, v))
        return std::nullopt;
    id.Data1 = static_cast<std::uint32_t>(v);
    if (!read_hex(text, 9, 4, v))
        return std::nullopt;
    id.Data2 = static_cast<std::uint16_t>(v);
    if (!read_hex(text, 14, 4, v))
        return std::nullopt;
    id.Data3 = static_cast<std::uint16_t>(v);
    static const std::size_t byte_pos[8] = {19, 21, 24, 26, 28, 30, 32, 34};
    for (std::size_t i = 0; i < 8; ++i) {
        if (!read_hex(text, byte_pos[i], 2, v))
            return std::nullopt;
        id.Data4[i] = static_cast<std::uint8_t>(v);
    }
    return id;
}

inline constexpr std::size_t uuid_text_length = 36;

// Lower case, without braces, the 36 characters at text. Written digit by digit: the C library's
// wide formatter costs several times more, and the answer to every status poll carries an id.
template <class Char> void put_uuid_text(const GUID& id, Char* text) {
    static constexpr char digits[] = "0123456789abcdef";
    std::size_t pos = 0;
    auto put = [&](std::uint32_t value, int count) {
        for (int shift = 4 * (count - 1); shift >= 0; shift -= 4)
            text[pos++] = static_cast<Char>(digits[(value >> shift) & 0xF]);
    };
    auto hyphen = [&] { text[pos++] = static_cast<Char>('-'); };
    put(id.Data1, 8);
    hyphen();
    put(id.Data2, 4);
    hyphen();
    put(id.Data3, 4);
    hyphen();
    put(id.Data4[0], 2);
    put(id.Data4[1], 2);
    hyphen();
    for (std::size_t i = 2; i < 8; ++i)
        put(id.Data4[i], 2);
}

inline std::wstring uuid_text(const GUID& id) {
    std::wstring text(uuid_text_length, L'\0');
    put_uuid_text(id, text.data());
    return text;
}

} // namespace compat

#include "common/win/native_name_posix.h"

#include "compat/unicode.h"

#include <string_view>

namespace win {

namespace {

constexpr wchar_t escaped_byte_base = 0xDC00;

} // namespace

std::wstring wide_from_native_name(const char* name) {
    const std::string_view bytes(name);
    std::wstring wide;
    for (std::size_t at = 0; at < bytes.size();) {
        const compat::decoded_t c = compat::decode_utf8(bytes.substr(at));
        if (!c.well_formed) {
            wide.clear();
            for (const char byte : bytes)
                wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
            return wide;
        }
        wide.push_back(static_cast<wchar_t>(c.value));
        at += c.units;
    }
    return wide;
}

std::wstring wide_from_name_bytes(const std::string& bytes) {
    const std::string_view text(bytes);
    std::wstring wide;
    for (std::size_t at = 0; at < text.size();) {
        const compat::decoded_t c = compat::decode_utf8(text.substr(at));
        if (c.well_formed)
            wide.push_back(static_cast<wchar_t>(c.value));
        else
            for (std::size_t i = 0; i < c.units; ++i)
                wide.push_back(
                    static_cast<wchar_t>(escaped_byte_base + static_cast<unsigned char>(text[at + i])));
        at += c.units;
    }
    return wide;
}

std::string native_name_bytes(const std::wstring& name) {
    std::string bytes;
    for (const wchar_t c : name) {
        const auto unit = static_cast<std::uint32_t>(c);
        if (unit >= escaped_byte_base + 0x80 && unit <= escaped_byte_base + 0xFF) {
            bytes.push_back(static_cast<char>(unit - escaped_byte_base));
            continue;
        }
        char encoded[4];
        bytes.append(encoded, compat::put_utf8(encoded, compat::scalar_or_replacement(unit)));
    }
    return bytes;
}

} // namespace win

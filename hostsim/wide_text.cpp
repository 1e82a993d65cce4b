#include "hostsim/wide_text.h"

#include <cwctype>
#include <random>

namespace hostsim {

std::string to_utf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (wchar_t wc : text) {
        auto c = static_cast<std::uint32_t>(wc);
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

// Lenient on purpose: the host reads its own files and file names, and a byte that isn't
// UTF-8 is kept as the character of that value rather than failing the simulated call.
std::wstring from_utf8(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        auto b = static_cast<unsigned char>(text[i]);
        int extra = b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : 0;
        if (extra == 0 || i + extra >= text.size()) {
            out += static_cast<wchar_t>(b);
            ++i;
            continue;
        }
        std::uint32_t c = b & (0x3F >> extra);
        bool valid = true;
        for (int k = 1; k <= extra; ++k) {
            auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) {
                valid = false;
                break;
            }
            c = (c << 6) | (next & 0x3F);
        }
        if (!valid) {
            out += static_cast<wchar_t>(b);
            ++i;
            continue;
        }
        out += static_cast<wchar_t>(c);
        i += extra + 1;
    }
    return out;
}

wchar_t fold_case(wchar_t c) {
    return static_cast<wchar_t>(std::towupper(static_cast<wint_t>(c)));
}

bool iequals(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (fold_case(a[i]) != fold_case(b[i]))
            return false;
    return true;
}

bool istarts_with(std::wstring_view text, std::wstring_view prefix) {
    return text.size() >= prefix.size() && iequals(text.substr(0, prefix.size()), prefix);
}

bool icontains(std::wstring_view text, std::wstring_view part) {
    if (part.empty())
        return true;
    for (std::size_t i = 0; i + part.size() <= text.size(); ++i)
        if (iequals(text.substr(i, part.size()), part))
            return true;
    return false;
}

namespace {

int hex_value(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

bool read_hex(std::wstring_view text, std::size_t pos, std::size_t digits, std::uint64_t& value) {
    value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        int v = hex_value(text[pos + i]);
        if (v < 0)
            return false;
        value = (value << 4) | static_cast<unsigned>(v);
    }
    return true;
}

} // namespace

std::optional<GUID> parse_guid(std::wstring_view text) {
    if (text.size() == 38 && text.front() == L'{' && text.back() == L'}')
        text = text.substr(1, 36);
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
    for (int i = 0; i < 8; ++i) {
        if (!read_hex(text, byte_pos[i], 2, v))
            return std::nullopt;
        id.Data4[i] = static_cast<std::uint8_t>(v);
    }
    return id;
}

std::wstring guid_text(const GUID& id) {
    wchar_t buf[40];
    std::swprintf(buf, 40, L"{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", id.Data1, id.Data2,
                  id.Data3, id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5],
                  id.Data4[6], id.Data4[7]);
    return buf;
}

GUID new_guid() {
    static thread_local std::mt19937_64 engine{std::random_device{}()};
    GUID id{};
    std::uint64_t hi = engine();
    std::uint64_t lo = engine();
    id.Data1 = static_cast<std::uint32_t>(hi >> 32);
    id.Data2 = static_cast<std::uint16_t>(hi >> 16);
    id.Data3 = static_cast<std::uint16_t>((hi & 0x0FFF) | 0x4000);
    for (int i = 0; i < 8; ++i)
        id.Data4[i] = static_cast<std::uint8_t>(lo >> (8 * i));
    id.Data4[0] = static_cast<std::uint8_t>((id.Data4[0] & 0x3F) | 0x80);
    return id;
}

namespace {

bool match_from(std::wstring_view mask, std::wstring_view name) {
    std::size_t m = 0, n = 0, star = std::wstring_view::npos, resume = 0;
    while (n < name.size()) {
        if (m < mask.size() && (mask[m] == L'?' || fold_case(mask[m]) == fold_case(name[n]))) {
            ++m;
            ++n;
        } else if (m < mask.size() && mask[m] == L'*') {
            star = m++;
            resume = n;
        } else if (star != std::wstring_view::npos) {
            m = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (m < mask.size() && mask[m] == L'*')
        ++m;
    return m == mask.size();
}

} // namespace

bool mask_matches(std::wstring_view mask, std::wstring_view name) {
    if (mask == L"*.*" || mask == L"*")
        return true;
    return match_from(mask, name);
}

std::wstring with_trailing_backslash(std::wstring path) {
    if (path.empty() || path.back() != L'\\')
        path += L'\\';
    return path;
}

} // namespace hostsim

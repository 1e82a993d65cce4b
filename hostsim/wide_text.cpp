#include "hostsim/wide_text.h"

#include "compat/utf8_codec.h"
#include "compat/uuid_text.h"

#include <cwctype>
#include <random>

namespace hostsim {

std::string to_utf8(std::wstring_view text) {
    std::size_t size = 0;
    for (const wchar_t wc : text)
        size += compat::utf8::encoded_length(static_cast<std::uint32_t>(wc));
    std::string out(size, '\0');
    char* cursor = out.data();
    for (const wchar_t wc : text)
        cursor = compat::utf8::put(cursor, static_cast<std::uint32_t>(wc));
    return out;
}

// Lenient on purpose: the host reads its own files and file names, and a byte that isn't
// UTF-8 is kept as the character of that value rather than failing the simulated call.
std::wstring from_utf8(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (const std::optional<std::uint32_t> c = compat::utf8::decode_at(text, i))
            out += static_cast<wchar_t>(*c);
        else
            out += static_cast<wchar_t>(static_cast<unsigned char>(text[i++]));
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

std::optional<GUID> parse_guid(std::wstring_view text) {
    if (text.size() == 38 && text.front() == L'{' && text.back() == L'}')
        text = text.substr(1, 36);
    return compat::parse_uuid_text(text);
}

std::wstring guid_text(const GUID& id) {
    return L"{" + compat::uuid_text(id) + L"}";
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

#include "hostsim/wide_text.h"

#include "compat/unicode.h"
#include "compat/uuid_text.h"

#include <algorithm>
#include <cwchar>

namespace hostsim {

std::string to_utf8(std::wstring_view text) {
    std::size_t size = 0;
    for (const wchar_t wc : text)
        size += compat::utf8_length(static_cast<char32_t>(wc));
    std::string out(size, '\0');
    char* cursor = out.data();
    for (const wchar_t wc : text)
        cursor = compat::put_utf8(cursor, static_cast<char32_t>(wc));
    return out;
}

// Lenient on purpose: the host reads its own files and file names, and a byte that isn't
// UTF-8 is kept as the character of that value rather than failing the simulated call.
std::wstring from_utf8(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const compat::decoded_t c = compat::decode_utf8(text.substr(i));
        out += c.well_formed ? static_cast<wchar_t>(c.value)
                             : static_cast<wchar_t>(static_cast<unsigned char>(text[i]));
        i += c.well_formed ? c.units : 1;
    }
    return out;
}

bool icontains(std::wstring_view text, std::wstring_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](wchar_t a, wchar_t b) { return compat::fold(a) == compat::fold(b); }) !=
               text.end() ||
           part.empty();
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
    GUID id = GUID_NULL;
    CoCreateGuid(&id);
    return id;
}

std::wstring with_trailing_backslash(std::wstring path) {
    if (path.empty() || path.back() != L'\\')
        path += L'\\';
    return path;
}

wchar_t* new_task_string(std::wstring_view text) {
    auto* copy = static_cast<wchar_t*>(CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
    std::wmemcpy(copy, text.data(), text.size());
    copy[text.size()] = L'\0';
    return copy;
}

BSTR new_bstr(std::wstring_view text) {
    return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

std::vector<std::wstring> split_text(std::wstring_view text, wchar_t separator, bool keep_empty) {
    std::vector<std::wstring> pieces;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        if (keep_empty || end > start)
            pieces.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

} // namespace hostsim

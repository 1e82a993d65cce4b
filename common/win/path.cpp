#include "common/win/path.h"

#include "compat/ascii_case.h"

#include <cwctype>

namespace win {

namespace {

bool starts_with_double_separator(const std::wstring& path) {
    return path.size() >= 2 && is_path_separator(path[0]) && is_path_separator(path[1]);
}

bool is_device_prefix(const std::wstring& path) {
    return starts_with_double_separator(path) && path.size() >= 3 && (path[2] == L'?' || path[2] == L'.') &&
           (path.size() == 3 || is_path_separator(path[3]));
}

bool is_drive(const std::wstring& text) {
    return text.size() == 2 && text[1] == L':' && std::iswalpha(static_cast<wint_t>(text[0]));
}

bool begins_with_volume_guid(const std::wstring& component) {
    return component.size() > 7 && compat::iequals(component.substr(0, 7), L"Volume{");
}

bool is_device_root(const std::vector<std::wstring>& parts) {
    // parts[0] is "?" or "."
    if (parts.size() == 2)
        return begins_with_volume_guid(parts[1]) || is_drive(parts[1]);
    return parts.size() == 4 && compat::iequals(parts[1], L"GLOBALROOT") &&
           compat::iequals(parts[2], L"Device");
}

} // namespace

bool is_path_separator(wchar_t c) noexcept {
    return c == L'\\' || c == L'/';
}

std::pair<std::wstring, std::wstring> split_path(const std::wstring& path) {
    const std::size_t pos = path.find_last_of(L"\\/");
    if (pos == std::wstring::npos)
        return {std::wstring(), path};
    return {path.substr(0, pos), path.substr(pos + 1)};
}

std::wstring parent_path(const std::wstring& path) {
    return split_path(path).first;
}

std::vector<std::wstring> path_components(const std::wstring& path) {
    std::vector<std::wstring> parts;
    std::size_t start = 0;
    while (start < path.size()) {
        std::size_t end = start;
        while (end < path.size() && !is_path_separator(path[end]))
            ++end;
        if (end > start)
            parts.emplace_back(path, start, end - start);
        start = end + 1;
    }
    return parts;
}

namespace {

void append_part(std::wstring& joined, bool& any_taken, const std::wstring& part) {
    if (part.empty())
        return;
    if (any_taken)
        joined += L'\\';
    const bool closing = is_path_separator(part.back());
    joined.append(part, 0, closing ? part.size() - 1 : part.size());
    any_taken = true;
}

} // namespace

// Sized once: a path joined per file of a large host would otherwise keep up to
// twice its length in spare capacity for as long as it lives.
std::wstring path_join(const std::wstring& a, const std::wstring& b, const std::wstring& c) {
    std::wstring joined;
    joined.reserve(a.size() + b.size() + c.size() + 2);
    bool any = false;
    append_part(joined, any, a);
    append_part(joined, any, b);
    append_part(joined, any, c);
    return joined;
}

std::wstring path_join(const std::wstring& a, const std::wstring& b) {
    return path_join(a, b, std::wstring());
}

std::wstring strip_trailing_separators(const std::wstring& path) {
    std::size_t end = path.size();
    while (end > 0 && is_path_separator(path[end - 1]))
        --end;
    return path.substr(0, end);
}

bool is_unc_share_path(const std::wstring& path) {
    return starts_with_double_separator(path) && !is_device_prefix(path);
}

bool is_root_path(const std::wstring& path) {
    const std::wstring stripped = strip_trailing_separators(path);
    if (stripped.empty())
        return !path.empty() && !starts_with_double_separator(path);
    if (is_drive(stripped))
        return true;
    if (!starts_with_double_separator(path))
        return false;
    const std::vector<std::wstring> parts = path_components(path);
    if (is_device_prefix(path))
        return is_device_root(parts);
    return parts.size() == 2;
}

} // namespace win

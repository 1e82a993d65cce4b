// Wide text compared without regard to ASCII letter case (not the locale's idea of case).
#pragma once

#include <string>

namespace VSSUtils {

inline wchar_t ascii_lower(wchar_t c) {
    return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

inline int compare_ignoring_ascii_case(const std::wstring& a, const std::wstring& b) {
    std::size_t common = a.size() < b.size() ? a.size() : b.size();
    for (std::size_t i = 0; i < common; ++i) {
        wchar_t x = ascii_lower(a[i]);
        wchar_t y = ascii_lower(b[i]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

inline bool equals_ignoring_ascii_case(const std::wstring& a, const std::wstring& b) {
    return a.size() == b.size() && compare_ignoring_ascii_case(a, b) == 0;
}

inline bool starts_with_ignoring_ascii_case(const std::wstring& text, const std::wstring& prefix) {
    return text.size() >= prefix.size() &&
           compare_ignoring_ascii_case(text.substr(0, prefix.size()), prefix) == 0;
}

struct AsciiCaseLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
        return compare_ignoring_ascii_case(a, b) < 0;
    }
};

} // namespace VSSUtils

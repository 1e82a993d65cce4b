// Text compared without regard to case as the system's ordinal comparisons do it: A to Z only,
// not the locale's idea of case. Product and simulated host compare names alike through these.
#pragma once

#include <cstddef>
#include <string_view>

namespace compat {

template <class Char> constexpr Char fold(Char c) {
    return (c >= Char('A') && c <= Char('Z')) ? static_cast<Char>(c - Char('A') + Char('a')) : c;
}

template <class Char> int compare_folded(std::basic_string_view<Char> a, std::basic_string_view<Char> b) {
    const std::size_t common = a.size() < b.size() ? a.size() : b.size();
    for (std::size_t i = 0; i < common; ++i)
        if (const Char x = fold(a[i]), y = fold(b[i]); x != y)
            return x < y ? -1 : 1;
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

inline int compare(std::wstring_view a, std::wstring_view b) {
    return compare_folded(a, b);
}

inline bool iequals(std::wstring_view a, std::wstring_view b) {
    return a.size() == b.size() && compare_folded(a, b) == 0;
}

inline bool iequals(std::string_view a, std::string_view b) {
    return a.size() == b.size() && compare_folded(a, b) == 0;
}

// The prefix may be narrow where the text is wide: it is ASCII.
template <class Char, class PrefixChar>
bool istarts_with(std::basic_string_view<Char> text, std::basic_string_view<PrefixChar> prefix) {
    if (text.size() < prefix.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i)
        if (fold(text[i]) != static_cast<Char>(fold(prefix[i])))
            return false;
    return true;
}

inline bool istarts_with(std::wstring_view text, std::wstring_view prefix) {
    return istarts_with<wchar_t, wchar_t>(text, prefix);
}

struct less_t {
    bool operator()(std::wstring_view a, std::wstring_view b) const { return compare(a, b) < 0; }
};

} // namespace compat

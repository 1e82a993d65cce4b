// Case folding as the system's ordinal comparisons do it: A to Z only.
#include "common/format/format.h"

#include <algorithm>

namespace {

template <typename CharT> CharT fold(CharT c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<CharT>(c - 'A' + 'a') : c;
}

template <typename CharT>
bool equal_folded(const std::basic_string<CharT>& a, const std::basic_string<CharT>& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](CharT x, CharT y) { return fold(x) == fold(y); });
}

} // namespace

std::wstring to_lower(const std::wstring& text) {
    std::wstring lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), fold<wchar_t>);
    return lower;
}

bool iequals(const std::wstring& a, const std::wstring& b) {
    return equal_folded(a, b);
}

bool iequals(const std::string& a, const std::string& b) {
    return equal_folded(a, b);
}

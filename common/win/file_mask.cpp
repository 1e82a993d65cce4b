#include "common/win/file_search.h"

#include <cwctype>

namespace win {

namespace {

wchar_t fold_case(wchar_t c) {
    if (c < 0x80)
        return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
    return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
}

// '*' and '?' over [mask, mask_end) against the whole name. One backtrack
// point (the last star) is enough for these two wild cards, which keeps the
// match close to linear in the name.
bool wildcard_match(const wchar_t* mask, const wchar_t* mask_end, const std::wstring& name) {
    const wchar_t* m = mask;
    std::size_t n = 0;
    const wchar_t* star = nullptr;
    std::size_t star_n = 0;
    while (n < name.size()) {
        if (m != mask_end && (*m == L'?' || (*m != L'*' && fold_case(*m) == fold_case(name[n])))) {
            ++m;
            ++n;
        } else if (m != mask_end && *m == L'*') {
            star = m++;
            star_n = n;
        } else if (star != nullptr) {
            m = star + 1;
            n = ++star_n;
        } else {
            return false;
        }
    }
    while (m != mask_end && *m == L'*')
        ++m;
    return m == mask_end;
}

} // namespace

bool mask_matches(const std::wstring& mask, const std::wstring& name) {
    const wchar_t* begin = mask.data();
    const wchar_t* end = begin + mask.size();
    if (wildcard_match(begin, end, name))
        return true;
    // A closing ".*" stands for "any extension or none".
    const bool any_extension = mask.size() >= 2 && mask[mask.size() - 2] == L'.' && mask.back() == L'*';
    return any_extension && wildcard_match(begin, end - 2, name);
}

} // namespace win

#include "common/format/format.h"

#include <algorithm>

std::wstring to_lower(const std::wstring& text) {
    std::wstring lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), compat::fold<wchar_t>);
    return lower;
}

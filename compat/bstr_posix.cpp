#include "compat/win_types.h"

#include <cstdlib>
#include <cstring>

// The length lives in the four bytes in front of the characters, as on Windows,
// so that SysStringLen works on embedded zeros too.
BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) {
    auto* block = static_cast<unsigned char*>(std::malloc(sizeof(UINT) + (ui + 1) * sizeof(OLECHAR)));
    if (!block)
        return nullptr;
    std::memcpy(block, &ui, sizeof(UINT));
    auto* text = reinterpret_cast<OLECHAR*>(block + sizeof(UINT));
    if (strIn)
        std::memcpy(text, strIn, ui * sizeof(OLECHAR));
    else
        std::memset(text, 0, ui * sizeof(OLECHAR));
    text[ui] = 0;
    return text;
}

BSTR SysAllocString(const OLECHAR* psz) {
    if (!psz)
        return nullptr;
    return SysAllocStringLen(psz, static_cast<UINT>(std::wcslen(psz)));
}

void SysFreeString(BSTR bstrString) {
    if (bstrString)
        std::free(reinterpret_cast<unsigned char*>(bstrString) - sizeof(UINT));
}

UINT SysStringLen(BSTR pbstr) {
    if (!pbstr)
        return 0;
    UINT len;
    std::memcpy(&len, reinterpret_cast<unsigned char*>(pbstr) - sizeof(UINT), sizeof(UINT));
    return len;
}

// Whether a Windows test runs under Wine, whose answers differ from Windows' in a few known
// places; a test accepts Wine's answer only there. Wine's ntdll exports its version.
#pragma once

#ifdef _WIN32
#include <windows.h>
#endif

namespace test_support {

inline bool under_wine() {
#ifdef _WIN32
    static const bool wine = [] {
        const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
        return ntdll != nullptr && ::GetProcAddress(ntdll, "wine_get_version") != nullptr;
    }();
    return wine;
#else
    return false;
#endif
}

} // namespace test_support

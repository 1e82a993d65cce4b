#include "common/win/native_name_posix.h"

#include "common/format/format.h"

namespace win {

std::wstring wide_from_native_name(const char* name) {
    std::wstring wide;
    const char* p = name;
    for (; *p != '\0'; ++p) {
        if (static_cast<unsigned char>(*p) >= 0x80)
            break;
        wide.push_back(static_cast<wchar_t>(*p));
    }
    if (*p == '\0')
        return wide;
    try {
        return from_utf8(name);
    } catch (const std::exception&) {
        wide.clear();
        for (p = name; *p != '\0'; ++p)
            wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(*p)));
        return wide;
    }
}

} // namespace win

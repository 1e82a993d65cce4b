#include "compat/win_types.h"

#include <cstdlib>
#include <random>

LPVOID CoTaskMemAlloc(SIZE_T cb) {
    return std::malloc(cb == 0 ? 1 : cb);
}

void CoTaskMemFree(LPVOID pv) {
    std::free(pv);
}

HRESULT CoCreateGuid(GUID* pguid) {
    static thread_local std::mt19937_64 generator{std::random_device{}()};
    const std::uint64_t high = generator();
    const std::uint64_t low = generator();
    pguid->Data1 = static_cast<std::uint32_t>(high >> 32);
    pguid->Data2 = static_cast<std::uint16_t>(high >> 16);
    // Version 4 and the standard variant, as the system's generator marks them.
    pguid->Data3 = static_cast<std::uint16_t>((high & 0x0FFF) | 0x4000);
    for (int i = 0; i < 8; ++i)
        pguid->Data4[i] = static_cast<std::uint8_t>(low >> (8 * (7 - i)));
    pguid->Data4[0] = static_cast<std::uint8_t>((pguid->Data4[0] & 0x3F) | 0x80);
    return S_OK;
}

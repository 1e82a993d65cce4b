#include "tool/snapshot_id.h"

#include <random>

GUID NewSnapshotId() {
    static thread_local std::mt19937_64 generator{std::random_device{}()};
    const std::uint64_t high = generator();
    const std::uint64_t low = generator();
    GUID id;
    id.Data1 = static_cast<std::uint32_t>(high >> 32);
    id.Data2 = static_cast<std::uint16_t>(high >> 16);
    // Version 4 and the standard variant, as the system's generator marks them.
    id.Data3 = static_cast<std::uint16_t>((high & 0x0FFF) | 0x4000);
    for (int i = 0; i < 8; ++i)
        id.Data4[i] = static_cast<std::uint8_t>(low >> (8 * (7 - i)));
    id.Data4[0] = static_cast<std::uint8_t>((id.Data4[0] & 0x3F) | 0x80);
    return id;
}

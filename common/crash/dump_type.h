// Which kind of minidump to write.
#pragma once

#include <cstdint>
#include <string>

namespace crash {

// The library's process-wide defaults that bear on dumps, filled on first use.
struct library_settings_t {
    std::uint32_t dump_kind_override = 0;
    std::string dump_type_text = "Normal";
};
library_settings_t& library_settings();

inline constexpr std::uint32_t minidump_normal = 0;           // MiniDumpNormal
inline constexpr std::uint32_t minidump_with_full_memory = 2; // MiniDumpWithFullMemory
// Data segments, handles, unloaded modules, thread and memory info and the
// like: what a support case asks for.
inline constexpr std::uint32_t minidump_support_kind = 0x21907;

// The MINIDUMP_TYPE for a requested kind: 2 for support, any other non-zero
// kind a normal dump; 0 follows the settings (override, else "Normal" or "Full").
std::uint32_t dump_type(int kind, const library_settings_t& settings);

} // namespace crash

#include "common/crash/dump_type.h"

namespace crash {

library_settings_t& library_settings() {
    static library_settings_t settings;
    return settings;
}

std::uint32_t dump_type(int kind, const library_settings_t& settings) {
    if (kind == 2)
        return minidump_support_kind;
    if (kind != 0)
        return minidump_normal;
    if (settings.dump_kind_override != 0)
        return settings.dump_kind_override;
    if (settings.dump_type_text == "Full")
        return minidump_with_full_memory;
    return minidump_normal;
}

} // namespace crash

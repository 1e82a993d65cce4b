#include "common/crash/crash_filter.h"
#include "common/crash/dump_gens_win32.h"
#include "common/crash/fault_win32.h"

namespace crash {

namespace {

// Minidumps came with system version 5.1.
bool system_has_minidumps() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    if (!::GetVersionExA(&version))
        return false;
#pragma GCC diagnostic pop
    return version.dwMajorVersion > 5 || (version.dwMajorVersion == 5 && version.dwMinorVersion >= 1);
}

} // namespace

std::unique_ptr<win32::dump_gen_base_t> pick_dump_generator() {
    if (system_has_minidumps()) {
        try {
            return std::make_unique<win32::minidump_gen_t>();
        } catch (const std::exception&) {
            // No usable dbghelp.dll: the exception log stands in.
        }
    }
    return std::make_unique<win32::legacy_dump_gen_t>();
}

long pass_to_previous_filter(raw_filter_t previous, const fault_t* fault) {
    const auto filter = reinterpret_cast<LPTOP_LEVEL_EXCEPTION_FILTER>(previous);
    return filter(fault != nullptr ? fault->pointers : nullptr);
}

} // namespace crash

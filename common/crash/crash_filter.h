// The crash filter: a dump, then the crash handlers; nothing leaves it.
#pragma once

#include "common/crash/crash_context.h"
#include "common/crash/dump_gen.h"

namespace crash {

// Writes a dump of the fault into the context's folder and runs the crash
// handlers. With pass_on it returns what the platform's previous filter says,
// if there is one; otherwise execute_handler. Never throws.
long crash_filter(const fault_t* fault, bool pass_on) noexcept;

// The previous filter's answer for the fault (platform code).
long pass_to_previous_filter(raw_filter_t previous, const fault_t* fault);

} // namespace crash

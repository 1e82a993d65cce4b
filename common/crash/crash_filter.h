// The crash filter: a dump, then the crash handlers; nothing leaves it.
#pragma once

#include "common/crash/crash_context.h"
#include "common/crash/dump_gen.h"

namespace crash {

// Whether the platform's previous filter, if there is one, gives the answer.
enum class previous_filter_t { skip, ask };

// Writes a dump of the fault into the context's folder and runs the crash
// handlers; returns execute_handler, or the previous filter's answer when asked
// and there is one. Never throws.
long crash_filter(const fault_t* fault, previous_filter_t previous) noexcept;

// The previous filter's answer for the fault (platform code).
long pass_to_previous_filter(raw_filter_t previous, const fault_t* fault);

} // namespace crash

// The holding phase of a task: the worker keeps what it made until the server
// closes the task, or for a week at most.
#pragma once

#include "compat/win_types.h"

namespace win {
class win_manual_reset_event_t;
}

namespace impl {

inline constexpr DWORD HoldLimitMs = 604800000; // seven days

// Returns once the event is set or the limit has passed; a failed wait throws
// exc::win_sys_exc_t.
void WaitForClose(const win::win_manual_reset_event_t& closeEvent, DWORD limitMs = HoldLimitMs);

} // namespace impl

// Identity and clock of the calling thread, as the log heads and the thread
// monitor show them.
#pragma once

#include "compat/win_types.h"

namespace win {

// GetCurrentThreadId; the kernel's thread id where there is no Win32.
DWORD current_thread_id() noexcept;
// GetTickCount: milliseconds since an arbitrary start, wrapping at 2^32.
DWORD tick_count() noexcept;

} // namespace win

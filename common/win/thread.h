// The operating system's threads, as the worker thread (common/runtime/win_thread.h)
// and the crash frame use them: the body a new thread runs, its exit code, and
// ending the calling thread.
#pragma once

#include "common/win/thread_id.h"

namespace win {

inline constexpr DWORD crashed_thread_exit_code = 0xFFFFFFFF; // a thread ended by the crash frame

// What a new thread runs, and what a crash frame runs around it.
using thread_body_t = DWORD (*)(void* context);

// GetExitCodeThread: STILL_ACTIVE while the thread runs. False with
// last_error() set for a handle that is not a thread.
bool thread_exit_code(HANDLE thread, DWORD& code);

// Ends the calling thread (started by win_thread_t) with the given exit code;
// its waiters see the thread ended. Unwinds the thread's stack where the
// platform does (POSIX), so its monitor entry is removed as well.
[[noreturn]] void exit_current_thread(DWORD exit_code);

} // namespace win

// The crash frame around each worker thread's routine: a crash of the thread
// becomes a dump, the crash handlers run, and the thread ends with the exit code
// 0xFFFFFFFF while the process goes on.
#pragma once

#include "common/win/thread.h"

namespace crash {

// A win::thread_frame_t; the one that worker threads run in unless another is set.
DWORD thread_crash_frame(win::thread_body_t body, void* context);

} // namespace crash

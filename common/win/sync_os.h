// The platform's event and thread calls under common/win/event.h and
// common/win/thread.h. Failures leave their code in last_error().
#pragma once

#include "common/win/thread.h"

namespace win::detail {

// CreateEventW, manual reset, not signalled. Null on failure.
HANDLE os_create_manual_reset_event();
bool os_set_event(HANDLE event);
bool os_reset_event(HANDLE event);

// CreateThread, running at once; the result of entry is the exit code. Null on failure.
HANDLE os_start_thread(thread_body_t entry, void* argument);

} // namespace win::detail

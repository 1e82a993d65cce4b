#include "snapshot/close_wait.h"

#include "common/exc/exc.h"
#include "common/win/event.h"
#include "common/win/last_error.h"
#include "common/win/wait.h"

namespace impl {

void WaitForClose(const win::win_manual_reset_event_t& closeEvent, DWORD limitMs) {
    const DWORD result = win::wait_for_object(closeEvent.handle(), limitMs);
    // A server that never closes the task gets the same ending as one that does.
    if (result == win::wait_object_0 || result == win::wait_timed_out)
        return;
    throw exc::win_sys_exc_t(win::last_error());
}

} // namespace impl

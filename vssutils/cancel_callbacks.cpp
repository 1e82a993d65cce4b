#include "vssutils/cancel_callbacks.h"

#include "common/exc/exc.h"
#include "common/win/event.h"
#include "common/win/last_error.h"
#include "common/win/wait.h"

namespace VSSUtils {

CWinEventTestCancelCallback::CWinEventTestCancelCallback(std::shared_ptr<win::win_manual_reset_event_t> event)
    : event_(std::move(event)) {}

bool CWinEventTestCancelCallback::TestCancel() {
    const DWORD no_wait = 0;
    DWORD result = win::wait_for_object(event_->handle(), no_wait);
    if (result == win::wait_object_0)
        return true;
    if (result == win::wait_timed_out)
        return false;
    throw exc::win_sys_exc_t(win::last_error());
}

} // namespace VSSUtils

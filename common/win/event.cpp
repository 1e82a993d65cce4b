#include "common/win/event.h"

#include "common/exc/exc.h"
#include "common/win/last_error.h"
#include "common/win/sync_os.h"
#include "common/win/wait.h"

namespace win {

win_manual_reset_event_t::win_manual_reset_event_t() : handle_(detail::os_create_manual_reset_event()) {
    if (!handle_.valid())
        throw exc::win_sys_exc_t("Cannot create an event object.", last_error());
}

void win_manual_reset_event_t::set() {
    try {
        if (!detail::os_set_event(handle()))
            throw exc::win_sys_exc_t("SetEvent() function call failed.", last_error());
    } catch (const std::exception& e) {
        exc::rethrow_with_message("Cannot set an event object to the signaled state.", e);
    }
}

void win_manual_reset_event_t::reset() {
    if (!detail::os_reset_event(handle()))
        throw exc::win_sys_exc_t("ResetEvent() function call failed.", last_error());
}

bool win_manual_reset_event_t::is_set() const {
    return wait_for_object(handle(), 0) == wait_object_0;
}

} // namespace win

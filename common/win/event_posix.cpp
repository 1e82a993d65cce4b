#include "common/win/kernel_object_posix.h"
#include "common/win/last_error.h"
#include "common/win/sync_os.h"

namespace win::detail {

namespace {

class event_object_t final : public posix::waitable_object_t {};

event_object_t* event_of(HANDLE handle) {
    auto* event = dynamic_cast<event_object_t*>(posix::from_handle(handle));
    if (event == nullptr)
        set_last_error(ERROR_INVALID_HANDLE);
    return event;
}

} // namespace

HANDLE os_create_manual_reset_event() {
    return posix::to_handle(new event_object_t());
}

bool os_set_event(HANDLE handle) {
    event_object_t* event = event_of(handle);
    if (event != nullptr)
        event->set_signalled(true);
    return event != nullptr;
}

bool os_reset_event(HANDLE handle) {
    event_object_t* event = event_of(handle);
    if (event != nullptr)
        event->set_signalled(false);
    return event != nullptr;
}

} // namespace win::detail

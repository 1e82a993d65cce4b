// A manual-reset event, created not signalled.
#pragma once

#include "common/win/handle.h"

namespace win {

class win_manual_reset_event_t {
public:
    // Throws exc::win_sys_exc_t "Cannot create an event object.".
    win_manual_reset_event_t();
    win_manual_reset_event_t(const win_manual_reset_event_t&) = delete;
    win_manual_reset_event_t& operator=(const win_manual_reset_event_t&) = delete;

    // SetEvent. Throws "Cannot set an event object to the signaled state." on failure.
    void set();
    // ResetEvent.
    void reset();
    // Signalled now? (a wait with time-out 0)
    bool is_set() const;
    // The handle to wait on, alone or with others (see common/win/wait.h).
    HANDLE handle() const { return handle_.handle(); }

private:
    win_handle_t handle_;
};

} // namespace win

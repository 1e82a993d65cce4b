#include "common/win/sync_os.h"

namespace win::detail {

HANDLE os_create_manual_reset_event() {
    return ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
}
bool os_set_event(HANDLE event) {
    return ::SetEvent(event) != FALSE;
}
bool os_reset_event(HANDLE event) {
    return ::ResetEvent(event) != FALSE;
}

} // namespace win::detail

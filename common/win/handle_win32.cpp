#include "common/win/handle.h"
#include "common/win/last_error.h"

namespace win {

DWORD last_error() noexcept {
    return ::GetLastError();
}
void set_last_error(DWORD code) noexcept {
    ::SetLastError(code);
}

bool close_handle(HANDLE handle) noexcept {
    return ::CloseHandle(handle) != FALSE;
}

} // namespace win

// The calling thread's last Win32 error (GetLastError / SetLastError).
#pragma once

#include "compat/win_types.h"

namespace win {

DWORD last_error() noexcept;
void set_last_error(DWORD code) noexcept;

// The answer of an open or a query for a name, or a folder on its way, that does not exist.
inline bool is_not_there(DWORD error) noexcept {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

} // namespace win

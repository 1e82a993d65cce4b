// The calling thread's last Win32 error (GetLastError / SetLastError).
#pragma once

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "compat/win_types.h"

#include <string>

namespace win {

DWORD last_error() noexcept;
void set_last_error(DWORD code) noexcept;

// The answer of an open or a query for a name, or a folder on its way, that does not exist.
inline bool is_not_there(DWORD error) noexcept {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

// A call's failure as the failure on the object it names: the name is converted only then.
inline void throw_if_failed(DWORD error, const char* fmt, const std::wstring& name) {
    if (error != ERROR_SUCCESS)
        throw exc::win_sys_exc_t(fmt, to_ansi_nothrow(name), error);
}

} // namespace win

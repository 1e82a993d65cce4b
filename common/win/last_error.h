// The calling thread's last Win32 error (GetLastError / SetLastError).
#pragma once

#include "compat/win_types.h"

namespace win {

DWORD last_error() noexcept;
void set_last_error(DWORD code) noexcept;

} // namespace win

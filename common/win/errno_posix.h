// The Win32 error that stands for an errno value.
#pragma once

#include "compat/win_types.h"

namespace win {

DWORD win32_error_from_errno(int error) noexcept;

} // namespace win

// The platform's file calls of the dump writers.
#pragma once

#include "compat/win_types.h"

#include <string>

namespace crash::detail {

// DeleteFile: 0 or the Win32 error.
DWORD delete_dump_file(const std::wstring& path);

} // namespace crash::detail

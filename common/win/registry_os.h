// The platform's registry calls under common/win/registry.h: 0 or the Win32 error.
#pragma once

#include "common/win/registry.h"

#include <string>

namespace win::detail {

struct reg_value_t {
    DWORD type = 0;
    std::wstring text; // REG_SZ, up to its first terminating zero
    DWORD number = 0;  // REG_DWORD
};

// RegOpenKeyExW; a null parent is HKEY_LOCAL_MACHINE.
DWORD os_reg_open(reg_handle_t parent, const std::wstring& path, DWORD access, reg_handle_t& key);
// RegQueryValueExW for the type and size, then the data when it is of the expected type.
DWORD os_reg_query(reg_handle_t key, const std::wstring& name, DWORD expected_type, reg_value_t& value);

} // namespace win::detail

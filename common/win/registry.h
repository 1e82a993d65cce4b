// Registry reads under HKEY_LOCAL_MACHINE. A key or value that is not there
// (errors 2 and 3) is an empty key or a false answer, never a failure.
#pragma once

#include "common/win/handle.h"

#include <string>

namespace win {

#ifdef _WIN32
using reg_handle_t = HKEY;
#else
using reg_handle_t = struct posix_reg_key_t*;
#endif

// The access of the settings reads.
inline constexpr DWORD reg_access_read_64 = KEY_READ | KEY_WOW64_64KEY;

// RegCloseKey.
void reg_close_key(reg_handle_t key) noexcept;

struct reg_key_traits {
    using pointer = reg_handle_t;
    static pointer invalid() noexcept { return nullptr; }
    static bool is_valid(pointer k) noexcept { return k != nullptr; }
    static void close(pointer k) noexcept { reg_close_key(k); }
};

// One open registry key; null for none.
class win_reg_key_t : public unique_any_t<reg_key_traits> {
public:
    using unique_any_t::unique_any_t;
    // The key's address, for an opening call to fill. Throws
    // exc::runtime_exc_t when the key is open already.
    reg_handle_t* operator&();
};

// RegOpenKeyExW under HKEY_LOCAL_MACHINE, or under an open key. The key is
// empty when it is not there. Throws exc::win_sys_exc_t "Failed to open
// subkey. Path: [%1]." for any other error.
win_reg_key_t reg_open_subkey(const std::wstring& path, DWORD access);
win_reg_key_t reg_open_subkey(const win_reg_key_t& parent, const std::wstring& path, DWORD access);

// RegQueryValueExW: false when the value is not there. Throws for an empty
// key, a value of another type and any other error, wrapped by "Cannot
// retrieve a registry value. Value name: [%1]. Expected value type: [%2].".
bool reg_read_string(const win_reg_key_t& key, const std::wstring& name, std::wstring& value);
bool reg_read_string(const win_reg_key_t& key, const std::string& name, std::string& value);
bool reg_read_dword(const win_reg_key_t& key, const std::wstring& name, DWORD& value);
bool reg_read_dword(const win_reg_key_t& key, const std::string& name, DWORD& value);

} // namespace win

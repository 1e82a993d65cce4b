#include "common/win/registry_os.h"

#include <vector>

namespace win {

void reg_close_key(reg_handle_t key) noexcept {
    ::RegCloseKey(key);
}

namespace detail {

DWORD os_reg_open(reg_handle_t parent, const std::wstring& path, DWORD access, reg_handle_t& key) {
    return static_cast<DWORD>(
        ::RegOpenKeyExW(parent != nullptr ? parent : HKEY_LOCAL_MACHINE, path.c_str(), 0, access, &key));
}

DWORD os_reg_query(reg_handle_t key, const std::wstring& name, DWORD expected_type, reg_value_t& value) {
    DWORD type = 0;
    DWORD size = 0;
    LSTATUS status = ::RegQueryValueExW(key, name.c_str(), nullptr, &type, nullptr, &size);
    if (status != ERROR_SUCCESS)
        return static_cast<DWORD>(status);
    value.type = type;
    if (type != expected_type)
        return ERROR_SUCCESS;
    if (type == REG_DWORD) {
        DWORD number = 0;
        size = sizeof(number);
        status =
            ::RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
        value.number = number;
        return static_cast<DWORD>(status);
    }
    // One more character than asked for, so that the text always ends in a zero.
    std::vector<wchar_t> buffer(size / sizeof(wchar_t) + 1, L'\0');
    size = static_cast<DWORD>((buffer.size() - 1) * sizeof(wchar_t));
    status =
        ::RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size);
    if (status != ERROR_SUCCESS)
        return static_cast<DWORD>(status);
    value.text = buffer.data();
    return ERROR_SUCCESS;
}

} // namespace detail
} // namespace win

#include "common/win/registry_os.h"

#include "hostsim/host_access.h"

namespace win {

// An open key of the simulated host's registry: its full path under HKEY_LOCAL_MACHINE.
struct posix_reg_key_t {
    std::wstring path;
};

void reg_close_key(reg_handle_t key) noexcept {
    delete key;
}

namespace detail {

DWORD os_reg_open(reg_handle_t parent, const std::wstring& path, DWORD, reg_handle_t& key) {
    const std::wstring full = parent == nullptr || parent->path.empty() ? path : parent->path + L"\\" + path;
    if (auto fault = hostsim::win32_call("RegOpenKeyExW", full))
        return *fault;
    if (!hostsim::registry_key_exists(full))
        return ERROR_FILE_NOT_FOUND;
    key = new posix_reg_key_t{full};
    return ERROR_SUCCESS;
}

DWORD os_reg_query(reg_handle_t key, const std::wstring& name, DWORD expected_type, reg_value_t& value) {
    if (auto fault = hostsim::win32_call("RegQueryValueExW", name))
        return *fault;
    auto found = hostsim::registry_value(key->path, name);
    if (!found)
        return ERROR_FILE_NOT_FOUND;
    value.type = found->type;
    if (value.type != expected_type)
        return ERROR_SUCCESS;
    value.text = found->text.substr(0, found->text.find(L'\0'));
    value.number = found->number;
    return ERROR_SUCCESS;
}

} // namespace detail
} // namespace win

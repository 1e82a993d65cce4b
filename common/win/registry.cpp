#include "common/win/registry.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/last_error.h"
#include "common/win/registry_os.h"

namespace win {

namespace {

win_reg_key_t open_subkey(reg_handle_t parent, const std::wstring& path, DWORD access) {
    reg_handle_t key = nullptr;
    const DWORD error = detail::os_reg_open(parent, path, access, key);
    if (is_not_there(error))
        return win_reg_key_t();
    throw_if_failed(error, "Failed to open subkey. Path: [%1].", path);
    return win_reg_key_t(key);
}

bool read_value(const win_reg_key_t& key, const std::wstring& name, DWORD expected_type,
                detail::reg_value_t& value) {
    try {
        if (!key.valid())
            throw exc::runtime_exc_t("Registry key object is not initialized.");
        const DWORD error = detail::os_reg_query(key.get(), name, expected_type, value);
        if (is_not_there(error))
            return false;
        if (error != ERROR_SUCCESS)
            throw exc::win_sys_exc_t(error);
        if (value.type != expected_type)
            throw exc::runtime_exc_t("Unexpected registry type: [%1].",
                                     num_to_string(static_cast<std::uint64_t>(value.type)));
        return true;
    } catch (const std::exception& e) {
        exc::rethrow_with_message(
            format_message("Cannot retrieve a registry value. Value name: [%1]. Expected value type: [%2].",
                           to_ansi_nothrow(name), num_to_string(static_cast<std::uint64_t>(expected_type))),
            e);
    }
}

} // namespace

reg_handle_t* win_reg_key_t::operator&() {
    if (valid())
        throw exc::runtime_exc_t("operator& cannot be called because registry key already initialized.");
    return put();
}

win_reg_key_t reg_open_subkey(const std::wstring& path, DWORD access) {
    return open_subkey(nullptr, path, access);
}

win_reg_key_t reg_open_subkey(const win_reg_key_t& parent, const std::wstring& path, DWORD access) {
    if (!parent.valid())
        throw exc::runtime_exc_t("Registry key object is not initialized.");
    return open_subkey(parent.get(), path, access);
}

bool reg_read_string(const win_reg_key_t& key, const std::wstring& name, std::wstring& value) {
    detail::reg_value_t read;
    if (!read_value(key, name, REG_SZ, read))
        return false;
    value = read.text;
    return true;
}

bool reg_read_string(const win_reg_key_t& key, const std::string& name, std::string& value) {
    std::wstring wide;
    if (!reg_read_string(key, to_unicode(name), wide))
        return false;
    value = to_ansi(wide);
    return true;
}

bool reg_read_dword(const win_reg_key_t& key, const std::wstring& name, DWORD& value) {
    detail::reg_value_t read;
    if (!read_value(key, name, REG_DWORD, read))
        return false;
    value = read.number;
    return true;
}

bool reg_read_dword(const win_reg_key_t& key, const std::string& name, DWORD& value) {
    return reg_read_dword(key, to_unicode(name), value);
}

} // namespace win

#include "common/logging/log_directory.h"

#include "common/win/registry.h"

#include <optional>

namespace logging {

namespace {

std::optional<std::wstring> configured_log_directory() {
    const win::win_reg_key_t key =
        win::reg_open_subkey(L"SOFTWARE\\Orlix\\Orlix Keepsafe", win::reg_access_read_64);
    std::wstring folder;
    if (!key || !win::reg_read_string(key, std::wstring(L"LogDirectory"), folder))
        return std::nullopt;
    return folder;
}

} // namespace

std::wstring log_directory() {
    try {
        if (auto configured = configured_log_directory())
            return *configured;
    } catch (...) {
        // An unreadable setting is no setting.
    }
    return fallback_log_directory();
}

std::wstring fallback_log_directory() {
    return platform::common_app_data_folder() + L"\\Orlix\\Backup\\";
}

} // namespace logging

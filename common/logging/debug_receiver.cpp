#include "common/logging/debug_receiver.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/debug_receiver_setup.h"
#include "common/logging/log_t.h"
#include "common/win/registry.h"

#include <cstring>

namespace logging::receiver {

COutputDebugStringLog::COutputDebugStringLog() : socket_(detail::invalid_socket_handle()) {
    std::memset(&target_, 0, sizeof target_);
    target_.sin_family = AF_INET;
    target_.sin_port = detail::os_htons(default_external_log_port);
    target_.sin_addr.s_addr = detail::os_inet_addr(default_external_log_host);
}

void COutputDebugStringLog::write(const std::string& text) {
    detail::os_debug_output(text);
    if (socket_ == detail::invalid_socket_handle()) {
        // A socket that could not be made is tried again at the next write.
        socket_ = detail::os_udp_socket();
        if (socket_ != detail::invalid_socket_handle())
            read_settings();
    }
    if (socket_ != detail::invalid_socket_handle() && external_log_enabled_ != 0)
        detail::os_send_datagram(socket_, text, target_);
}

void COutputDebugStringLog::compress(const std::shared_ptr<util::zip_writer_t>&) {
    // Nothing to move: the caller drops the writer, which leaves an empty archive.
}

void COutputDebugStringLog::read_settings() noexcept {
    try {
        win::win_reg_key_t key = win::reg_open_subkey(external_log_key, KEY_READ);
        if (!key.valid())
            throw exc::win_sys_exc_t("Failed to open registry key [%1].", to_ansi_nothrow(external_log_key),
                                     ERROR_FILE_NOT_FOUND);
        DWORD enabled = 0;
        if (!win::reg_read_dword(key, L"ExtLogEnabled", enabled))
            return;
        external_log_enabled_ = enabled != 0 ? 1 : 0;
        if (external_log_enabled_ == 0)
            return;
        // A dotted address: no name is looked up, and a name gives INADDR_NONE.
        std::string host;
        if (!win::reg_read_string(key, std::string("ExtLogHost"), host))
            return;
        target_.sin_addr.s_addr = detail::os_inet_addr(host);
        DWORD port = 0;
        if (!win::reg_read_dword(key, L"ExtLogPort", port))
            return;
        target_.sin_port = detail::os_htons(static_cast<std::uint16_t>(port));
    } catch (...) {
        // The external log stays off, or keeps the defaults of the values not reached.
    }
}

} // namespace logging::receiver

namespace logging {

void install_debug_log() {
    debug_log()->install(std::make_shared<receiver::COutputDebugStringLog>(), false);
}

} // namespace logging

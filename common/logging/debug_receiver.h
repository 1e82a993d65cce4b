// The receiver of the "dbg" log: each message goes to the debugger channel and,
// when the registry switches it on, as one UDP datagram to a listening host.
#pragma once

#include "common/logging/debug_receiver_os.h"
#include "common/logging/log_file_receiver.h"
#include "compat/win_types.h"

#include <cstdint>

namespace logging::receiver {

inline constexpr std::uint16_t default_external_log_port = 37183;
inline constexpr const char* default_external_log_host = "127.0.0.1";
// Where the external log is switched on, with its values ExtLogEnabled, ExtLogHost and ExtLogPort.
inline constexpr const wchar_t* external_log_key = L"SOFTWARE\\OrliX\\Orlix NFS";

class COutputDebugStringLog : public log_file_t {
public:
    COutputDebugStringLog();
    // The socket stays open: the process end takes it.
    ~COutputDebugStringLog() override = default;

    // Runs under the lock of its log, which is all the lazy set-up needs.
    void write(const std::string& text) override;
    std::string path() const override { return path_; }
    std::string eol() const override { return eol_; }
    // Always 0: the receiver never comes to the size limit.
    std::uint64_t size() override { return 0; }
    void compress(const std::shared_ptr<util::zip_writer_t>& writer) override;

    bool external_log_enabled() const { return external_log_enabled_ != 0; }
    const sockaddr_in& target() const { return target_; }

private:
    // Once, at the first write that has a socket; any failure leaves what was read so far.
    void read_settings() noexcept;

    std::string path_;
    std::string eol_ = "\n";
    std::uint32_t external_log_enabled_ = 0;
    sockaddr_in target_;
    detail::socket_handle_t socket_;
};

} // namespace logging::receiver

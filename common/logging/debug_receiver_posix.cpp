#include "common/logging/debug_receiver_os.h"

#include <sys/socket.h>
#include <unistd.h>

namespace logging::receiver::detail {

socket_handle_t invalid_socket_handle() noexcept {
    return -1;
}

void os_debug_output(const std::string&) noexcept {
    // No debugger channel here; the datagrams are the way to watch this log.
}

socket_handle_t os_udp_socket() noexcept {
    return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
}

void os_send_datagram(socket_handle_t socket, const std::string& text, const sockaddr_in& target) noexcept {
    [[maybe_unused]] const ssize_t sent = ::sendto(socket, text.data(), text.size(), 0,
                                                   reinterpret_cast<const sockaddr*>(&target), sizeof target);
}

} // namespace logging::receiver::detail

// The platform's debug channel and datagram socket under the debug receiver.
#pragma once

#ifdef _WIN32
#include <winsock2.h>
namespace logging::receiver::detail {
using socket_handle_t = SOCKET;
}
#else
#include <arpa/inet.h>
#include <netinet/in.h>
namespace logging::receiver::detail {
using socket_handle_t = int;
}
#endif

#include <cstdint>
#include <string>

namespace logging::receiver::detail {

// INVALID_SOCKET.
socket_handle_t invalid_socket_handle() noexcept;
// OutputDebugStringA where the platform has a debugger channel; nothing elsewhere.
void os_debug_output(const std::string& text) noexcept;
// socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP); invalid_socket_handle() on failure.
socket_handle_t os_udp_socket() noexcept;
// sendto without flags; the result is of no interest to a log.
void os_send_datagram(socket_handle_t socket, const std::string& text, const sockaddr_in& target) noexcept;
// inet_addr and htons: network byte order.
inline std::uint32_t os_inet_addr(const std::string& dotted) noexcept {
    return ::inet_addr(dotted.c_str());
}
inline std::uint16_t os_htons(std::uint16_t port) noexcept {
    return htons(port);
}

} // namespace logging::receiver::detail

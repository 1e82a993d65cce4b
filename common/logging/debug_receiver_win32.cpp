#include "common/logging/debug_receiver_os.h"

#include <mutex>
#include <windows.h>

namespace logging::receiver::detail {

socket_handle_t invalid_socket_handle() noexcept {
    return INVALID_SOCKET;
}

void os_debug_output(const std::string& text) noexcept {
    ::OutputDebugStringA(text.c_str());
}

socket_handle_t os_udp_socket() noexcept {
    // Sockets need the library started once in the process; it stays up until the process ends.
    static std::once_flag started;
    std::call_once(started, [] {
        WSADATA data;
        ::WSAStartup(MAKEWORD(2, 2), &data);
    });
    return ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
}

void os_send_datagram(socket_handle_t socket, const std::string& text, const sockaddr_in& target) noexcept {
    ::sendto(socket, text.data(), static_cast<int>(text.size()), 0,
             reinterpret_cast<const sockaddr*>(&target), sizeof target);
}

} // namespace logging::receiver::detail

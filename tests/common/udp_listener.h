// A UDP socket on 127.0.0.1 with a port of the system's choice, read without waiting: where the
// debug receiver's datagrams land.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace log_test {

class udp_listener_t {
public:
    udp_listener_t() {
#ifdef _WIN32
        WSADATA data;
        ::WSAStartup(MAKEWORD(2, 2), &data);
#endif
        socket_ = ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_EQ(::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length), 0);
        port_ = ntohs(address.sin_port);
#ifdef _WIN32
        u_long non_blocking = 1;
        ::ioctlsocket(socket_, FIONBIO, &non_blocking);
#endif
    }
    ~udp_listener_t() {
#ifdef _WIN32
        ::closesocket(socket_);
        ::WSACleanup();
#else
        ::close(socket_);
#endif
    }

    std::uint16_t port() const {
        return port_;
    }
    // Datagrams on the loopback are queued before sendto returns: what has not come is not coming.
    std::vector<std::string> received() const {
        std::vector<std::string> datagrams;
        char buffer[65536];
#ifdef _WIN32
        const int flags = 0;
#else
        const int flags = MSG_DONTWAIT;
#endif
        for (int length; (length = static_cast<int>(::recv(socket_, buffer, sizeof buffer, flags))) >= 0;)
            datagrams.emplace_back(buffer, static_cast<std::size_t>(length));
        return datagrams;
    }

private:
#ifdef _WIN32
    SOCKET socket_ = INVALID_SOCKET;
#else
    int socket_ = -1;
#endif
    std::uint16_t port_ = 0;
};

} // namespace log_test

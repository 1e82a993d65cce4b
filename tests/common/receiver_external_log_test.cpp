// The debug receiver's datagrams to a UDP socket on the loopback: on POSIX against a simulated host's
// registry, whole messages as datagrams when switched on, nothing when off, and the registry read once in
// either case; on Windows through the system's own sockets, with the external log switched on in the
// registry for the length of the test.
#include "common/logging/debug_receiver.h"
#include "common/logging/log_t.h"
#include "log_test_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include "win_temp_tree.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

using logging::receiver::COutputDebugStringLog;

namespace {

// A socket on 127.0.0.1 with a port of the system's choice, read without waiting.
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
    // The lines of each datagram without their heads. Datagrams on the loopback are queued before
    // sendto returns: what has not come is not coming.
    std::vector<log_test::lines_t> received() const {
        std::vector<log_test::lines_t> datagrams;
        char buffer[65536];
#ifdef _WIN32
        const int flags = 0;
#else
        const int flags = MSG_DONTWAIT;
#endif
        for (int length; (length = static_cast<int>(::recv(socket_, buffer, sizeof buffer, flags))) >= 0;)
            datagrams.push_back(
                log_test::bodies_of(std::string(buffer, static_cast<std::size_t>(length)), "\n"));
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

#ifdef _WIN32

// The external log's key with its three values while it lives; false when the test may not write
// the machine's registry.
class external_log_key_t {
public:
    explicit external_log_key_t(std::uint16_t port) {
        if (::RegCreateKeyExW(HKEY_LOCAL_MACHINE, logging::receiver::external_log_key, 0, nullptr, 0,
                              KEY_WRITE, nullptr, &key_, nullptr) != ERROR_SUCCESS)
            return;
        const DWORD enabled = 1;
        const DWORD port_value = port;
        const wchar_t host[] = L"127.0.0.1";
        ::RegSetValueExW(key_, L"ExtLogEnabled", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&enabled),
                         sizeof enabled);
        ::RegSetValueExW(key_, L"ExtLogHost", 0, REG_SZ, reinterpret_cast<const BYTE*>(host), sizeof host);
        ::RegSetValueExW(key_, L"ExtLogPort", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&port_value),
                         sizeof port_value);
    }
    ~external_log_key_t() {
        if (key_ == nullptr)
            return;
        ::RegCloseKey(key_);
        ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, logging::receiver::external_log_key);
    }
    bool made() const { return key_ != nullptr; }

private:
    HKEY key_ = nullptr;
};

} // namespace

TEST(DebugReceiver, EachMessageReachesTheListeningSocketAsOneDatagram) {
    udp_listener_t listener;
    external_log_key_t key(listener.port());
    if (!key.made())
        GTEST_SKIP() << "The machine's registry is not writable here.";
    const auto receiver = std::make_shared<COutputDebugStringLog>();
    logging::log_t log;
    log.install(receiver, false);
    logging::format::line_format_t format{"dbg"};
    log.write(logging::level_info, 0, &format, "first");
    log.write(logging::level_info, 0, &format, "second");
    EXPECT_EQ(listener.received(), (std::vector<log_test::lines_t>{{"dbg| first"}, {"dbg| second"}}));
}

#else

class external_log_test : public ::testing::Test {
protected:
    external_log_test() { log_.install(receiver_, false); }

    // The external log's settings, switched on or off, with the listener's port.
    void set_registry(int enabled, const std::string& host) const {
        host_.describe(R"(<Host name="T"><Registry><Key path="SOFTWARE\OrliX\Orlix NFS">)"
                       R"(<Value name="ExtLogEnabled" type="REG_DWORD" data=")" +
                       std::to_string(enabled) + R"("/><Value name="ExtLogHost" type="REG_SZ" data=")" +
                       host + R"("/><Value name="ExtLogPort" type="REG_DWORD" data=")" +
                       std::to_string(listener_.port()) + R"("/></Key></Registry></Host>)");
    }
    void write(const std::string& message) { log_.write(logging::level_info, 0, &format_, message); }

    std::size_t journal_count(const std::string& op) const {
        std::ifstream journal(host_.root() / "state" / "journal.txt");
        std::size_t count = 0;
        for (std::string line; std::getline(journal, line);)
            if (line.find("\t" + op + "\t") != std::string::npos)
                ++count;
        return count;
    }

    win_test::selected_host_t host_{R"(<Host name="T"/>)"};
    std::shared_ptr<COutputDebugStringLog> receiver_ = std::make_shared<COutputDebugStringLog>();
    logging::log_t log_;
    logging::format::line_format_t format_{"dbg"};
    udp_listener_t listener_;
};

} // namespace

TEST_F(external_log_test, EachMessageGoesOutWholeAsOneDatagramWithSettingsReadOnce) {
    set_registry(1, "127.0.0.1");
    write("first");
    write("two\nlines");
    // Switched off too late: the settings were read with the first message.
    set_registry(0, "127.0.0.1");
    write("after");
    EXPECT_EQ(listener_.received(),
              (std::vector<log_test::lines_t>{{"dbg| first"}, {"dbg| two", "dbg| lines"}, {"dbg| after"}}));
    EXPECT_EQ(journal_count("RegOpenKeyExW"), 1u);
}

// Without the key the log is off with its defaults; switched off, host and port are not even looked at;
// a host name is not looked up.
TEST_F(external_log_test, MissingKeyOrSwitchedOffOrAHostNameSendsNothingAndReadsTheRegistryOnce) {
    write("one");
    write("two");
    EXPECT_FALSE(receiver_->external_log_enabled());
    EXPECT_EQ(journal_count("RegOpenKeyExW"), 1u);
    EXPECT_EQ(ntohs(receiver_->target().sin_port), 37183);
    EXPECT_EQ(receiver_->target().sin_addr.s_addr, htonl(INADDR_LOOPBACK));

    set_registry(0, "127.0.0.1");
    receiver_ = std::make_shared<COutputDebugStringLog>();
    log_.install(receiver_, false);
    for (const char* message : {"one", "two", "three"})
        write(message);
    EXPECT_TRUE(listener_.received().empty());
    EXPECT_FALSE(receiver_->external_log_enabled());
    EXPECT_EQ(journal_count("RegOpenKeyExW"), 2u);
    EXPECT_EQ(journal_count("RegQueryValueExW"), 1u);

    // Switched on, a host name is not looked up.
    set_registry(1, "localhost");
    receiver_ = std::make_shared<COutputDebugStringLog>();
    log_.install(receiver_, false);
    write("one");
    EXPECT_TRUE(receiver_->external_log_enabled());
    EXPECT_EQ(receiver_->target().sin_addr.s_addr, INADDR_NONE);
    EXPECT_EQ(ntohs(receiver_->target().sin_port), listener_.port());
    EXPECT_TRUE(listener_.received().empty());
}

#endif

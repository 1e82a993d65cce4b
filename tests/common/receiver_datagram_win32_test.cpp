// Windows only: the debug receiver's datagram through the system's own sockets, to a socket the
// test opened, with the external log switched on in the registry for the length of the test.
#include "common/logging/debug_receiver.h"
#include "common/logging/log_t.h"
#include "log_test_support.h"
#include "udp_listener.h"

#include <gtest/gtest.h>

using logging::receiver::COutputDebugStringLog;

namespace {

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
    log_test::udp_listener_t listener;
    external_log_key_t key(listener.port());
    if (!key.made())
        GTEST_SKIP() << "The machine's registry is not writable here.";
    const auto receiver = std::make_shared<COutputDebugStringLog>();
    logging::log_t log;
    log.install(receiver, false);
    logging::format::line_format_t format{"dbg"};
    log.write(logging::level_info, 0, &format, "first");
    log.write(logging::level_info, 0, &format, "second");
    EXPECT_TRUE(receiver->external_log_enabled());
    EXPECT_EQ(ntohs(receiver->target().sin_port), listener.port());
    const std::vector<std::string> datagrams = listener.received();
    ASSERT_EQ(datagrams.size(), 2u);
    EXPECT_TRUE(datagrams[0].ends_with("dbg| first\n")) << datagrams[0];
    EXPECT_TRUE(datagrams[1].ends_with("dbg| second\n")) << datagrams[1];
}

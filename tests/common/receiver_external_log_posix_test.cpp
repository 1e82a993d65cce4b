// POSIX only: the registry is the simulated host's.
// The debug receiver against a simulated host's registry and a UDP listener on
// the loopback: whole messages as datagrams when switched on, nothing when off,
// and the registry read once in either case.
#include "common/logging/debug_receiver.h"
#include "common/logging/log_t.h"
#include "log_test_support.h"
#include "udp_listener.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

using logging::receiver::COutputDebugStringLog;

namespace {

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
    log_test::udp_listener_t listener_;
};

} // namespace

TEST_F(external_log_test, EachMessageGoesOutWholeAsOneDatagramWithSettingsReadOnce) {
    set_registry(1, "127.0.0.1");
    write("first");
    write("two\nlines");
    // Switched off too late: the settings were read with the first message.
    set_registry(0, "127.0.0.1");
    write("after");
    const auto datagrams = listener_.received();
    ASSERT_EQ(datagrams.size(), 3u);
    EXPECT_EQ(log_test::body(datagrams[0].substr(0, datagrams[0].size() - 1)), "dbg| first");
    EXPECT_EQ(datagrams[0].back(), '\n');
    const std::size_t break_at = datagrams[1].find('\n');
    ASSERT_NE(break_at, std::string::npos);
    EXPECT_EQ(log_test::body(datagrams[1].substr(0, break_at)), "dbg| two");
    EXPECT_EQ(log_test::body(datagrams[1].substr(break_at + 1, datagrams[1].size() - break_at - 2)),
              "dbg| lines");
    EXPECT_EQ(datagrams[1].back(), '\n');
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

// The bytes that a message leaves in the log file.
#include "log_test_support.h"

#include "common/exc/exc.h"
#include "common/logging/line_layout.h"
#include "tests/support/memory_receiver.h"

#include <limits>
#include <thread>

using log_test::body;
using log_test::file_lines;
using log_test::log_file_test;

namespace {

struct no_text_exception : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

} // namespace

// A message is cut at line feeds only; warnings and errors mark its first and further lines.
TEST_F(log_file_test, warnings_and_errors_mark_first_and_further_lines_of_a_message_cut_at_line_feeds) {
    log_error(logging::tool_logger(), "Access is denied.\nCannot create folder.");
    log_warning(logging::lib_logger(), "one\ntwo\nthree");
    log_info(logging::prx_logger(), "plain\nsecond");
    const auto& h = logging::rpc_logger();
    log_info(h, "ends in a line feed\n");
    log_info(h, "\n");
    log_info(h, "");
    log_info(h, "carriage\r\nreturn");
    log_info(h, "gap\n\nafter");
    EXPECT_EQ(bodies(),
              (std::vector<std::string>{
                  "Mirrack| ERR |Access is denied.", "Mirrack| >>  |Cannot create folder.", "WARN|one",
                  ">>  |two", ">>  |three", "prx| plain", "prx| second", "rpc| ends in a line feed", "rpc| ",
                  "rpc| ", "rpc| carriage\r", "rpc| return", "rpc| gap", "rpc| ", "rpc| after"}));
}

TEST_F(log_file_test, exception_lines_keep_the_system_text_as_it_stands) {
    log_exception(logging::tool_logger(), exc::win_sys_exc_t("Cannot create folder.", 5));
    log_exception(logging::tool_logger(), no_text_exception());
    log_exception(logging::tool_logger(), "Context %1.", "A", no_text_exception());
    const auto lines = bodies();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0].rfind("Mirrack| ERR |", 0), 0u);
    EXPECT_EQ(lines[0].back(), '\r');
    EXPECT_EQ(lines[1], "Mirrack| >>  |");
    EXPECT_EQ(lines[2], "Mirrack| >>  |Cannot create folder.");
    EXPECT_EQ(lines[3], "Mirrack| ERR |Exception message is not available.");
    EXPECT_EQ(lines[4], "Mirrack| ERR |Context A.");
}

TEST_F(log_file_test, indent_steps_are_two_blanks_of_the_thread_alone_and_warnings_stand_at_the_margin) {
    const auto& h = logging::tool_logger();
    log_indent_out(h); // at 0 it stays at 0
    log_indent_in(h);
    log_indent_in(h);
    long other_id = 0;
    std::thread other([&] {
        other_id = win::current_thread_id();
        log_info(h, "other thread");
    });
    other.join();
    log_info(h, "two steps\nstill two");
    log_trace(h, "trace %1", "too");
    log_warning(h, "warning");
    log_error(h, "error");
    log_info_sub(h, "sub %1 %2", "a", "b");
    log_indent_out(h);
    log_indent_out(h);
    log_info(h, "back");
    const auto lines = file_lines(log_path_);
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(body(lines[0], other_id), "Mirrack| other thread");
    std::vector<std::string> own;
    for (std::size_t i = 1; i < lines.size(); ++i)
        own.push_back(body(lines[i]));
    EXPECT_EQ(own, (std::vector<std::string>{"Mirrack|     two steps", "Mirrack|     still two",
                                             "Mirrack|     trace too", "Mirrack| WARN|warning",
                                             "Mirrack| ERR |error", "Mirrack|   sub a b", "Mirrack| back"}));
}

TEST(log_receiver, nothing_is_written_or_queued_before_a_receiver_and_a_message_is_one_write) {
    logging::log_t log;
    const logging::format::line_format_t format("x");
    log.write(logging::level_info, 0, &format, "lost");
    auto receiver = std::make_shared<test_support::memory_receiver_t>();
    log.install(receiver, false);
    log.write(logging::level_info, 0, nullptr, "no format, no line");
    log.write(logging::level_error, 0, &format, "first\nsecond");
    ASSERT_EQ(receiver->writes.size(), 1u);
    const std::string& text = receiver->writes[0];
    EXPECT_NE(text.find("x| ERR |first\n"), std::string::npos) << text;
    EXPECT_NE(text.find("x| >>  |second\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("lost"), std::string::npos);
}

TEST(log_line_layout, time_stamp_is_local_time_or_a_fixed_text_and_the_short_layout_shows_level_words) {
    const std::time_t moment = 1794806578;
    const std::tm* parts = std::localtime(&moment);
    ASSERT_NE(parts, nullptr);
    char expected[64];
    std::strftime(expected, sizeof expected, "[%d.%m.%Y %H:%M:%S] ", parts);
    EXPECT_EQ(logging::format::timestamp_text(moment), expected);
    EXPECT_EQ(logging::format::timestamp_text(std::numeric_limits<std::time_t>::max()), "TIME ---");
    // The short layout shows level words and two digits of the thread.
    logging::format::message_head_t head{"TS ", 123456, 1, "ignored| ", "\n"};
    EXPECT_EQ(logging::format::message_text(head, logging::level_warning, 1, "a\nb"),
              "TS <56> Warning    a\nTS <56> Warning    b\n");
    head.thread_id = 7;
    EXPECT_EQ(logging::format::message_text(head, logging::level_trace, 0, "t"), "TS < 7> Info     t\n");
    EXPECT_EQ(logging::format::message_text(head, logging::level_error, 0, "e"), "TS < 7> Error    e\n");
    head.mode = 0;
    head.thread_id = 1234567;
    EXPECT_EQ(logging::format::message_text(head, logging::level_info, 0, "wide"),
              "TS <1234567> ignored| wide\n");
}

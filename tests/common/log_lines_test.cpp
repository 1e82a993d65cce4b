// The bytes that a message leaves in the log file. Log blocks: how a step opens, ends and fails in the
// log, and in the thread's monitoring state; the steps of the threads' states themselves.
#include "common/exc/exc.h"
#include "common/logging/line_layout.h"
#include "common/monitoring/thread_states.h"
#include "common/runtime/win_thread.h"
#include "log_test_support.h"
#include "tests/support/memory_receiver.h"

#include <limits>
#include <stdexcept>
#include <thread>

using log_test::bodies_of;
using log_test::body;
using log_test::lines_t;
using log_test::log_file_test;

namespace {

struct no_text_exception : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

// The steps that two blocks push on a worker's state, then how many are left once both have closed.
DWORD run_block_on_worker(void* argument) {
    auto* seen = static_cast<lines_t*>(argument);
    auto state = monitoring::CThreadStatesCollection::get()->find(win::current_thread_id());
    if (!state)
        return 1;
    const std::size_t before = state->steps().size();
    {
        log_scope_t block(logging::tool_logger(), "outer step");
        log_scope_t quiet(log_scope_t::silent, logging::tool_logger(), "quiet step");
        for (std::size_t i = before; i < state->steps().size(); ++i)
            seen->push_back(state->steps()[i]->text());
        quiet.ok();
        block.ok();
    }
    seen->push_back(std::to_string(state->steps().size() - before) + " left");
    return 0;
}

} // namespace

// A message is cut at line feeds only; warnings and errors mark its first and further lines. An
// exception's system text keeps the carriage return that ends it.
TEST_F(log_file_test, warnings_and_errors_mark_the_lines_of_a_message_cut_at_line_feeds_and_exceptions_too) {
    log_exception(logging::tool_logger(), exc::win_sys_exc_t("Cannot create folder.", 5));
    log_exception(logging::tool_logger(), no_text_exception());
    log_exception(logging::tool_logger(), "Context %1.", "A", no_text_exception());
    log_error(logging::tool_logger(), "Access is denied.\nCannot create folder.");
    log_warning(logging::lib_logger(), "one\ntwo\nthree");
    log_info(logging::prx_logger(), "plain\nsecond");
    const auto& h = logging::rpc_logger();
    log_info(h, "ends in a line feed\n");
    log_info(h, "\n");
    log_info(h, "");
    log_info(h, "carriage\r\nreturn");
    log_info(h, "gap\n\nafter");
    auto lines = bodies();
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(lines[0].starts_with("Mirrack| ERR |") && lines[0].ends_with('\r')) << lines[0];
    lines.erase(lines.begin());
    EXPECT_EQ(lines, (lines_t{"Mirrack| >>  |", "Mirrack| >>  |Cannot create folder.",
                              "Mirrack| ERR |Exception message is not available.", "Mirrack| ERR |Context A.",
                              "Mirrack| ERR |Access is denied.", "Mirrack| >>  |Cannot create folder.",
                              "WARN|one", ">>  |two", ">>  |three", "prx| plain", "prx| second",
                              "rpc| ends in a line feed", "rpc| ", "rpc| ", "rpc| carriage\r", "rpc| return",
                              "rpc| gap", "rpc| ", "rpc| after"}));
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
    const std::string text = log_test::read_file(log_path_);
    const std::size_t first_end = text.find("\r\n");
    EXPECT_EQ(body(text.substr(0, first_end), other_id), "Mirrack| other thread");
    EXPECT_EQ(
        bodies_of(text.substr(first_end + 2)),
        (lines_t{"Mirrack|     two steps", "Mirrack|     still two", "Mirrack|     trace too",
                 "Mirrack| WARN|warning", "Mirrack| ERR |error", "Mirrack|   sub a b", "Mirrack| back"}));
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
    EXPECT_EQ(bodies_of(receiver->writes[0], "\n"), (lines_t{"x| ERR |first", "x| >>  |second"}));
}

TEST(log_line_layout, time_stamp_is_local_time_or_a_fixed_text_and_the_short_layout_shows_level_words) {
    const std::time_t moment = 1794806578;
    char expected[64];
    std::strftime(expected, sizeof expected, "[%d.%m.%Y %H:%M:%S] ", std::localtime(&moment));
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

using monitoring::CThreadState;
using monitoring::CThreadStatesCollection;

// A block closed ok frames its lines; one left by an exception fails, nested ones both; a silent one
// speaks only when it fails; a block ends once, with a chosen line or none.
TEST_F(log_file_test, blocks_frame_their_lines_fail_when_left_by_an_exception_and_end_once) {
    const auto& h = logging::tool_logger();
    {
        log_scope_t block(h, "Gathering %1 metadata", "writer");
        log_info(h, "inside");
        block.ok();
    }
    try {
        log_scope_t outer(h, "outer");
        log_scope_t inner(h, "inner");
        throw std::runtime_error("boom");
    } catch (const std::exception&) {
    }
    {
        log_scope_t quiet(log_scope_t::silent, logging::lib_logger(), "probe %1", "one");
        log_info(logging::lib_logger(), "work");
        quiet.ok();
    }
    try {
        log_scope_t quiet(log_scope_t::silent, logging::lib_logger(), "probe %1 of %2", "two", "three");
        throw std::runtime_error("boom");
    } catch (const std::exception&) {
    }
    {
        log_scope_t block(h, "Copying");
        block.finish("Copied %1 of %2.", "3", "4");
        block.ok();
    }
    {
        log_scope_t block(h, "Waiting");
        block.close_quietly();
        block.finish("never");
    }
    {
        log_scope_t block(h, "Renamed");
        block.set_text("Renamed step");
    }
    log_info(h, "margin");
    EXPECT_EQ(bodies(), (lines_t{"Mirrack| Gathering writer metadata", "Mirrack|   inside",
                                 "Mirrack| Gathering writer metadata ok.", "Mirrack| outer",
                                 "Mirrack|   inner", "Mirrack|   inner Failed.", "Mirrack| outer Failed.",
                                 "work", "probe two of three Failed.", "Mirrack| Copying",
                                 "Mirrack| Copied 3 of 4.", "Mirrack| Waiting", "Mirrack| Renamed",
                                 "Mirrack| Renamed step Failed.", "Mirrack| margin"}));
}

TEST(ThreadSteps, BlocksPushAndPopAWorkersStepsAndOneStateServesEachThreadId) {
    lines_t seen;
    win::win_thread_t worker(&run_block_on_worker, &seen, "LogBlockTest");
    worker.stop_wait();
    EXPECT_EQ(seen, (lines_t{"outer step", "quiet step", "0 left"}));
    // Pop takes the last pushed and ignores an empty stack.
    CThreadState state("Role", 1);
    state.pop();
    state.push("outer");
    state.push("inner");
    state.pop();
    state.push("second inner");
    ASSERT_EQ(state.steps().size(), 2u);
    EXPECT_EQ(state.steps()[0]->text(), "outer");
    EXPECT_EQ(state.steps()[1]->text(), "second inner");
    // A second state for a thread id replaces nothing.
    const auto collection = CThreadStatesCollection::get();
    constexpr DWORD fake_id = 0xFFFFFFF0;
    auto first = std::make_shared<CThreadState>("First", fake_id);
    EXPECT_TRUE(collection->add(first));
    EXPECT_FALSE(collection->add(std::make_shared<CThreadState>("Second", fake_id)));
    EXPECT_EQ(collection->find(fake_id), first);
    collection->remove(fake_id);
}

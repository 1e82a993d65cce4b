// Log blocks: how a step opens, ends and fails in the log, and in the thread's monitoring state; the
// steps of the threads' states themselves.
#include "log_test_support.h"

#include "common/monitoring/thread_states.h"
#include "common/runtime/win_thread.h"

#include <stdexcept>

using log_test::log_file_test;

using lines_t = std::vector<std::string>;
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

namespace {

struct observed_steps {
    std::vector<std::string> inside;
    std::size_t after = 99;
};

DWORD run_block_on_worker(void* argument) {
    auto* seen = static_cast<observed_steps*>(argument);
    auto state = monitoring::CThreadStatesCollection::get()->find(win::current_thread_id());
    if (!state)
        return 1;
    const std::size_t before = state->steps().size();
    {
        log_scope_t block(logging::tool_logger(), "outer step");
        log_scope_t quiet(log_scope_t::silent, logging::tool_logger(), "quiet step");
        for (std::size_t i = before; i < state->steps().size(); ++i)
            seen->inside.push_back(state->steps()[i]->text());
        quiet.ok();
        block.ok();
    }
    seen->after = state->steps().size() - before;
    return 0;
}

} // namespace

// Blocks push and pop steps of a worker thread; the steps and the threads' states themselves.
TEST(ThreadSteps, BlocksPushAndPopAWorkersStepsAndOneStateServesEachThreadId) {
    observed_steps seen;
    {
        win::win_thread_t worker(&run_block_on_worker, &seen, "LogBlockTest");
        worker.stop_wait();
        EXPECT_EQ(worker.exit_code(), 0u);
    }
    EXPECT_EQ(seen.inside, (lines_t{"outer step", "quiet step"}));
    EXPECT_EQ(seen.after, 0u);
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
    // A thread without a state pushes nothing.
    const auto collection = CThreadStatesCollection::get();
    ASSERT_EQ(collection->find(win::current_thread_id()), nullptr);
    const std::size_t before = collection->size();
    monitoring::push_step("Main thread step.");
    monitoring::pop_step();
    EXPECT_EQ(collection->size(), before);
    EXPECT_EQ(collection->find(win::current_thread_id()), nullptr);
    // A second state for a thread id replaces nothing.
    constexpr DWORD fake_id = 0xFFFFFFF0;
    auto first = std::make_shared<CThreadState>("First", fake_id);
    EXPECT_TRUE(collection->add(first));
    EXPECT_FALSE(collection->add(std::make_shared<CThreadState>("Second", fake_id)));
    EXPECT_EQ(collection->find(fake_id), first);
    collection->remove(fake_id);
    EXPECT_EQ(collection->find(fake_id), nullptr);
}

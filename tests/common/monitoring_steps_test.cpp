#include "common/monitoring/thread_states.h"
#include "common/win/event.h"
#include "common/win/thread.h"
#include "common/win/wait.h"

#include <gtest/gtest.h>

using monitoring::CThreadState;
using monitoring::CThreadStatesCollection;

namespace {

std::vector<std::string> texts_of(const CThreadState& state) {
    std::vector<std::string> texts;
    for (const auto& step : state.steps())
        texts.push_back(step->text());
    return texts;
}

struct worker_steps_t {
    win::win_manual_reset_event_t pushed;
    win::win_manual_reset_event_t may_finish;
    std::shared_ptr<CThreadState> state;
};

DWORD push_nested_steps(void* argument) {
    auto* steps = static_cast<worker_steps_t*>(argument);
    steps->state = CThreadStatesCollection::get()->find(win::current_thread_id());
    monitoring::push_step("Creating VSS backup object.");
    monitoring::push_step("Gathering writer metadata.");
    monitoring::push_step("Inner step.");
    monitoring::pop_step();
    steps->pushed.set();
    win::wait_for_object(steps->may_finish.handle(), win::wait_infinite);
    return 0;
}

} // namespace

TEST(ThreadSteps, PopTakesTheLastPushedAndIgnoresAnEmptyStack) {
    CThreadState state("Role", 1);
    state.pop();
    state.push("outer");
    state.push("inner");
    state.pop();
    state.push("second inner");
    EXPECT_EQ(texts_of(state), (std::vector<std::string>{"outer", "second inner"}));
}

TEST(ThreadSteps, LogBlocksOfAWorkerLandInItsOwnState) {
    worker_steps_t steps;
    win::win_thread_t worker(&push_nested_steps, &steps, "VssSnapImport");
    win::wait_for_object(steps.pushed.handle(), win::wait_infinite);
    ASSERT_NE(steps.state, nullptr);
    EXPECT_EQ(steps.state->role(), "VssSnapImport");
    EXPECT_EQ(texts_of(*steps.state),
              (std::vector<std::string>{"Creating VSS backup object.", "Gathering writer metadata."}));
    steps.may_finish.set();
    worker.stop_wait();
}

TEST(ThreadSteps, ThreadWithoutStatePushesNothing) {
    const auto collection = CThreadStatesCollection::get();
    ASSERT_EQ(collection->find(win::current_thread_id()), nullptr);
    const std::size_t before = collection->size();
    monitoring::push_step("Main thread step.");
    monitoring::pop_step();
    EXPECT_EQ(collection->size(), before);
    EXPECT_EQ(collection->find(win::current_thread_id()), nullptr);
}

TEST(ThreadStatesCollection, OneStatePerThreadIdNothingReplaced) {
    const auto collection = CThreadStatesCollection::get();
    constexpr DWORD fake_id = 0xFFFFFFF0;
    auto first = std::make_shared<CThreadState>("First", fake_id);
    EXPECT_TRUE(collection->add(first));
    EXPECT_FALSE(collection->add(std::make_shared<CThreadState>("Second", fake_id)));
    EXPECT_EQ(collection->find(fake_id), first);
    collection->remove(fake_id);
    EXPECT_EQ(collection->find(fake_id), nullptr);
}

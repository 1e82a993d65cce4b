#include "common/monitoring/thread_states.h"
#include "common/win/thread_id.h"

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

} // namespace

TEST(ThreadSteps, PopTakesTheLastPushedIgnoresAnEmptyStackAndAThreadWithoutStateHasNone) {
    CThreadState state("Role", 1);
    state.pop();
    state.push("outer");
    state.push("inner");
    state.pop();
    state.push("second inner");
    EXPECT_EQ(texts_of(state), (std::vector<std::string>{"outer", "second inner"}));
    // A thread without a state pushes nothing.
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

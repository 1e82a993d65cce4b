// POSIX only: Windows ends a crashed thread without unwinding it.
// Ending a worker from inside, as crash handling does where the stack can be unwound.
#include "common/monitoring/thread_states.h"
#include "common/win/thread.h"

#include <gtest/gtest.h>

#include <atomic>

using namespace win;

namespace {

struct unwind_probe_t {
    std::atomic<bool>* unwound;
    ~unwind_probe_t() { unwound->store(true); }
};

DWORD end_as_crashed(void* argument) {
    unwind_probe_t probe{static_cast<std::atomic<bool>*>(argument)};
    exit_current_thread(crashed_thread_exit_code);
}

} // namespace

TEST(WorkerThreadEnd, EndedThreadShowsTheCrashCodeAndUnwinds) {
    std::atomic<bool> unwound{false};
    win_thread_t thread(&end_as_crashed, &unwound, "Crashing");
    thread.stop_wait();
    EXPECT_EQ(thread.exit_code(), 0xFFFFFFFFu);
    EXPECT_TRUE(unwound.load());
    EXPECT_EQ(monitoring::CThreadStatesCollection::get()->find(thread.thread_id()), nullptr);
}

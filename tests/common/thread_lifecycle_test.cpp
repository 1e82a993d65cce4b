// Worker threads: their role, exit code and end, and the waits on events and workers.
#include "common/exc/exc.h"
#include "common/monitoring/thread_states.h"
#include "common/runtime/win_thread.h"
#include "common/win/event.h"
#include "common/win/last_error.h"
#include "common/win/wait.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace win;

namespace {

// What a routine saw on its own thread.
struct seen_t {
    DWORD thread_id = 0;
    std::string role;
};

DWORD return_42(void* argument) {
    auto* seen = static_cast<seen_t*>(argument);
    seen->thread_id = current_thread_id();
    if (auto state = monitoring::CThreadStatesCollection::get()->find(seen->thread_id))
        seen->role = state->role();
    return 42;
}

DWORD wait_for_release(void* argument) {
    return wait_for_object(static_cast<win_manual_reset_event_t*>(argument)->handle(), wait_infinite);
}

} // namespace

TEST(WorkerThread, RunsUnderItsRoleHandsBackTheExitCodeAndIsWaitedForByItsDestructor) {
    seen_t seen;
    win_thread_t thread(&return_42, &seen, "VssSnapshotThread");
    thread.stop_wait();
    EXPECT_EQ(thread.exit_code(), 42u);
    EXPECT_EQ(seen.role, "VssSnapshotThread");
    EXPECT_EQ(thread.thread_id(), seen.thread_id);
    EXPECT_NE(seen.thread_id, current_thread_id());
    EXPECT_EQ(thread.parent_id(), current_thread_id());
    // Stopped already: returns at once.
    EXPECT_NO_THROW(thread.stop_wait());
    // The destructor waits for the routine.
    std::atomic<bool> finished{false};
    {
        win_thread_t waited(
            [](void* argument) -> DWORD {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                static_cast<std::atomic<bool>*>(argument)->store(true);
                return 0;
            },
            &finished, "Waited");
    }
    EXPECT_TRUE(finished.load());
}

TEST(WaitOnEvents, AManualResetEventStaysSetUntilResetWaitsOnSeveralSeeEachOneAndWorkersOutliveStopWaits) {
    win_manual_reset_event_t event;
    EXPECT_EQ(wait_for_object(event.handle(), 0), wait_timed_out);
    event.set();
    EXPECT_EQ(wait_for_object(event.handle(), 0), wait_object_0);
    EXPECT_TRUE(event.is_set()); // manual reset: still set
    event.reset();
    EXPECT_FALSE(event.is_set());
    // The lowest signalled index.
    win_manual_reset_event_t a, b, c;
    EXPECT_EQ(wait_for_any({a.handle(), b.handle(), c.handle()}, 0), wait_timed_out);
    c.set();
    b.set();
    EXPECT_EQ(wait_for_any({a.handle(), b.handle(), c.handle()}, wait_infinite), wait_object_0 + 1);
    // The worker's handle becomes signalled when its routine has returned, woken by a set on this thread.
    win_manual_reset_event_t go;
    win_thread_t worker(&wait_for_release, &go, "Waiter");
    EXPECT_EQ(wait_for_any({event.handle(), worker.handle()}, 0), wait_timed_out);
    // A thread outlives a stop wait that times out.
    EXPECT_EQ(failure_lines([&] { worker.stop_wait_for(20); }),
              std::vector<std::string>{"Thread failed to stop during specified timeout: [20]."});
    EXPECT_FALSE(worker.exit_code().has_value());
    go.set();
    EXPECT_EQ(wait_for_any({event.handle(), worker.handle()}, wait_infinite), wait_object_0 + 1);
    worker.stop_wait();
    EXPECT_EQ(worker.exit_code(), wait_object_0);
    // A handle that is not waitable fails.
    EXPECT_EQ(wait_for_object(nullptr, 0), wait_failed);
    EXPECT_EQ(last_error(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(wait_for_objects(nullptr, 0, 0), wait_failed);
}

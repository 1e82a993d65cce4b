#include "common/runtime/win_thread.h"
#include "common/win/event.h"
#include "common/win/last_error.h"
#include "common/win/wait.h"

#include <gtest/gtest.h>

using namespace win;

namespace {

DWORD wait_then_return(void* argument) {
    return wait_for_object(static_cast<win_manual_reset_event_t*>(argument)->handle(), wait_infinite);
}

} // namespace

TEST(WaitOnEvents, AManualResetEventStaysSetUntilResetAndWaitsOnSeveralSeeEachOne) {
    win_manual_reset_event_t event;
    EXPECT_FALSE(event.is_set());
    EXPECT_EQ(wait_for_object(event.handle(), 0), wait_timed_out);
    event.set();
    EXPECT_EQ(wait_for_object(event.handle(), 0), wait_object_0);
    EXPECT_EQ(wait_for_object(event.handle(), 0), wait_object_0); // manual reset: still set
    event.reset();
    EXPECT_FALSE(event.is_set());
    // Any gives the lowest signalled index, all waits for every one.
    win_manual_reset_event_t a, b, c;
    EXPECT_EQ(wait_for_any({a.handle(), b.handle(), c.handle()}, 0), wait_timed_out);
    c.set();
    b.set();
    EXPECT_EQ(wait_for_any({a.handle(), b.handle(), c.handle()}, wait_infinite), wait_object_0 + 1);
    const HANDLE handles[] = {a.handle(), b.handle()};
    EXPECT_EQ(wait_for_objects(handles, 2, true, 0), wait_timed_out);
    a.set();
    EXPECT_EQ(wait_for_objects(handles, 2, true, 0), wait_object_0);
}

// The worker's handle becomes signalled when its routine has returned, woken by a set on this thread.
TEST(WaitOnSeveral, CloseEventAndWorkerTogether) {
    win_manual_reset_event_t close_event;
    win_manual_reset_event_t go;
    win_thread_t worker(&wait_then_return, &go, "Waiter");
    EXPECT_EQ(wait_for_any({close_event.handle(), worker.handle()}, 0), wait_timed_out);
    go.set();
    EXPECT_EQ(wait_for_any({close_event.handle(), worker.handle()}, wait_infinite), wait_object_0 + 1);
    worker.stop_wait();
    EXPECT_EQ(worker.exit_code(), wait_object_0);
    // A handle that is not waitable fails.
    EXPECT_EQ(wait_for_object(nullptr, 0), wait_failed);
    EXPECT_EQ(last_error(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(wait_for_objects(nullptr, 0, false, 0), wait_failed);
}

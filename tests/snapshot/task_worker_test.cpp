// The worker of a task: what escapes its body, and a worker that outlives its join. The hold and
// its end by the close event or by its limit are read through the snapshot and import tasks.
#include "snapshot_test_support.h"

#include "common/exc/exc.h"
#include "common/win/event.h"
#include "snapshot/task_core.h"
#include "snapshot/task_worker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using namespace snapshot_test;

namespace {

void wait_until(const std::function<bool()>& condition) {
    while (!condition())
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

} // namespace

TEST(TaskWorker, WhatEscapesTheBodyIsLoggedAndAWorkerThatOutlivesItsJoinKeepsItsData) {
    log_capture_t log;
    impl::CTaskWorker worker("TestWorker", std::make_shared<win::win_manual_reset_event_t>(),
                             [] { throw exc::runtime_exc_t("Body gave up."); });
    wait_until([&] { return worker.HasEnded(); });
    worker.Stop();
    EXPECT_TRUE(log.has("Body gave up.")) << log.text();
    // The joiner gives up and goes on; the worker finishes later on what its body holds.
    auto gate = std::make_shared<win::win_manual_reset_event_t>();
    auto data = std::make_shared<std::vector<int>>();
    auto done = std::make_shared<std::atomic<bool>>(false);
    {
        impl::CTaskWorker outliving(
            "TestWorker", std::make_shared<win::win_manual_reset_event_t>(),
            [gate, data, done] {
                impl::WaitForClose(*gate);
                data->assign(1000, 7);
                *done = true;
            },
            50);
        outliving.Stop();
    }
    EXPECT_TRUE(log.has("Thread failed to stop during specified timeout: [50].")) << log.text();
    EXPECT_EQ(impl::CTaskWorker::ReapAbandoned(), 1u);
    gate->set();
    wait_until([&] { return done->load(); });
    wait_until([] { return impl::CTaskWorker::ReapAbandoned() == 0; });
}

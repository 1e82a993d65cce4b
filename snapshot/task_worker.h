// The worker thread of a task. It runs its body once, logs whatever escapes the
// body, and is stopped by setting the task's close event and joining it for a
// limited time. A worker that outlives the join keeps running on what its body
// holds: the body and the thread object are left to it, never freed under it.
#pragma once

#include "common/runtime/win_thread.h"

#include <functional>
#include <memory>
#include <string>

namespace win {
class win_manual_reset_event_t;
}

namespace impl {

// A thread's own stop limit: three minutes.
inline constexpr DWORD JoinLimitMs = win::stop_wait_timeout_ms;

class CTaskWorker {
public:
    // Starts the thread at once under the given role.
    CTaskWorker(const std::string& role, std::shared_ptr<win::win_manual_reset_event_t> closeEvent,
                std::function<void()> body, DWORD joinLimitMs = JoinLimitMs);
    // Stops the worker if that hasn't been done.
    ~CTaskWorker();
    CTaskWorker(const CTaskWorker&) = delete;
    CTaskWorker& operator=(const CTaskWorker&) = delete;

    // Has the thread ended? A zero-time wait on its handle.
    bool HasEnded() const;
    // Sets the close event and joins the thread; a failure or a time-out is
    // logged, never thrown.
    void Stop() noexcept;

    // Frees the workers left running by Stop that have ended since; the number
    // of those still running.
    static std::size_t ReapAbandoned();

private:
    struct SRun;
    static DWORD Run(void* run);

    std::shared_ptr<win::win_manual_reset_event_t> closeEvent_;
    std::unique_ptr<SRun> run_;
    DWORD joinLimitMs_;
    bool stopped_ = false;
};

} // namespace impl

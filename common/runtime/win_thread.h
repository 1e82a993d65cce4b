// Worker threads: every thread of the system is a win_thread_t. Its entry
// registers the thread under a role in the thread monitor, runs the routine in
// the crash frame and logs start and end.
#pragma once

#include "common/win/handle.h"
#include "common/win/thread.h"

#include <atomic>
#include <optional>
#include <string>

namespace win {

// A routine of a thread: its result is the thread's exit code.
using thread_routine_t = DWORD (*)(void* argument);

inline constexpr DWORD stop_wait_timeout_ms = 180000;

class win_thread_t {
public:
    // Starts the thread at once. Throws exc::win_sys_exc_t "Cannot create thread.".
    win_thread_t(thread_routine_t routine, void* argument, const std::string& role);
    // Waits without limit for the thread, then closes its handle; logs and
    // swallows any failure.
    ~win_thread_t();
    win_thread_t(const win_thread_t&) = delete;
    win_thread_t& operator=(const win_thread_t&) = delete;

    // Returns when the thread has ended; throws exc::runtime_exc_t after
    // stop_wait_timeout_ms without killing the thread.
    void stop_wait();
    // The same with another limit (for callers and tests that cannot wait minutes).
    void stop_wait_for(DWORD timeout_ms);

    // The handle to wait on: signalled once the routine has returned.
    HANDLE handle() const { return handle_.handle(); }
    // The exit code once the thread has ended; nullopt while it runs.
    std::optional<DWORD> exit_code() const;
    const std::string& role() const { return role_; }
    DWORD parent_id() const { return parent_id_; }
    // The new thread's id, 0 until its entry has begun.
    DWORD thread_id() const { return thread_id_.load(); }

private:
    static DWORD entry(void* self);
    DWORD run();

    thread_routine_t routine_;
    void* argument_;
    win_handle_t handle_;
    std::string role_;
    DWORD parent_id_;
    std::atomic<DWORD> thread_id_{0};
    // Set by the thread itself when its routine's end ran; it stays clear after a crash.
    bool ended_ = false;
};

// The crash frame around every win_thread_t entry. Crash handling installs one
// that turns a crash of the thread into a dump and the exit code
// crashed_thread_exit_code; without one the body runs bare.
using thread_frame_t = DWORD (*)(thread_body_t body, void* context);
void set_thread_frame(thread_frame_t frame) noexcept;

} // namespace win

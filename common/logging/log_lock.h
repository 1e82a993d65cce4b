// The lock of the log. A thread that writes while it writes takes it again; a thread that the crash
// frame ends inside a write never unwinds to its unlock, so it lets go of every hold at its end.
// Every line takes this lock: a plain mutex, a word for the holder and a depth cost a fraction of a
// robust recursive mutex, whose list keeping would cost as much as the line's formatting.
#pragma once

#include "common/win/thread_id.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace logging {

class log_lock_t {
public:
    void lock() {
        const DWORD self = win::current_thread_id();
        if (owner_.load(std::memory_order_relaxed) == self) {
            ++depth_;
            return;
        }
        mutex_.lock();
        owner_.store(self, std::memory_order_relaxed);
        depth_ = 1;
    }

    void unlock() noexcept {
        if (--depth_ == 0)
            release();
    }

    // Every hold of the calling thread, whatever its depth; nothing when it holds none.
    void release_if_held() noexcept {
        if (owner_.load(std::memory_order_relaxed) == win::current_thread_id())
            release();
    }

private:
    void release() noexcept {
        depth_ = 0;
        owner_.store(0, std::memory_order_relaxed);
        mutex_.unlock();
    }

    std::mutex mutex_;
    // The holder's thread id, 0 when free: a thread finds its own id here only while it holds.
    std::atomic<DWORD> owner_{0};
    // Touched by the holder alone.
    std::uint32_t depth_ = 0;
};

} // namespace logging

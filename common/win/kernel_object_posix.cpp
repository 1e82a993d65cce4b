#include "common/win/kernel_object_posix.h"

#include "common/win/handle.h"
#include "common/win/last_error.h"
#include "common/win/wait.h"

#include <climits>
#include <ctime>
#include <mutex>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace win {

namespace {
thread_local DWORD t_last_error = 0;
}

DWORD last_error() noexcept {
    return t_last_error;
}
void set_last_error(DWORD code) noexcept {
    t_last_error = code;
}

bool close_handle(HANDLE handle) noexcept {
    posix::kernel_object_t* object = posix::from_handle(handle);
    if (object == nullptr) {
        set_last_error(ERROR_INVALID_HANDLE);
        return false;
    }
    object->release();
    return true;
}

namespace posix {

void kernel_object_t::release() noexcept {
    if (refs_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

namespace {

std::atomic<std::uint32_t>& change_count() noexcept {
    static std::atomic<std::uint32_t> count{0};
    return count;
}

std::uint32_t* futex_word() noexcept {
    static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));
    return reinterpret_cast<std::uint32_t*>(&change_count());
}

} // namespace

// Never destroyed: a detached thread may still signal while the process exits.
robust_mutex_t& signal_mutex() noexcept {
    static auto* mutex = new robust_mutex_t;
    return *mutex;
}

std::uint32_t signal_changes() noexcept {
    return change_count().load(std::memory_order_acquire);
}

void wait_for_signal_change(std::uint32_t seen, DWORD timeout_ms) noexcept {
    timespec limit = {static_cast<time_t>(timeout_ms / 1000), static_cast<long>(timeout_ms % 1000) * 1000000};
    ::syscall(SYS_futex, futex_word(), FUTEX_WAIT_PRIVATE, seen,
              timeout_ms == wait_infinite ? nullptr : &limit, nullptr, 0);
}

void waitable_object_t::set_signalled(bool signalled) {
    {
        std::lock_guard<robust_mutex_t> guard(signal_mutex());
        signalled_ = signalled;
        if (signalled)
            change_count().fetch_add(1, std::memory_order_release);
    }
    if (signalled)
        ::syscall(SYS_futex, futex_word(), FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

bool waitable_object_t::signalled() const {
    std::lock_guard<robust_mutex_t> guard(signal_mutex());
    return signalled_;
}

kernel_object_t* from_handle(HANDLE handle) noexcept {
    if (handle == nullptr || handle == invalid_handle())
        return nullptr;
    return static_cast<kernel_object_t*>(handle);
}

} // namespace posix
} // namespace win

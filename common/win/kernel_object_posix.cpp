#include "common/win/kernel_object_posix.h"

#include "common/win/handle.h"
#include "common/win/last_error.h"

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

// Never destroyed: a detached thread may still signal while the process exits.
std::mutex& signal_mutex() noexcept {
    static auto* mutex = new std::mutex;
    return *mutex;
}

std::condition_variable& signal_condition() noexcept {
    static auto* condition = new std::condition_variable;
    return *condition;
}

void waitable_object_t::set_signalled(bool signalled) {
    std::lock_guard<std::mutex> guard(signal_mutex());
    signalled_ = signalled;
    // Under the lock: no waiter can see the state and move on before the
    // notification is through.
    if (signalled)
        signal_condition().notify_all();
}

bool waitable_object_t::signalled() const {
    std::lock_guard<std::mutex> guard(signal_mutex());
    return signalled_;
}

kernel_object_t* from_handle(HANDLE handle) noexcept {
    if (handle == nullptr || handle == invalid_handle())
        return nullptr;
    return static_cast<kernel_object_t*>(handle);
}

} // namespace posix
} // namespace win

#include "common/win/errno_posix.h"
#include "common/win/kernel_object_posix.h"
#include "common/win/last_error.h"
#include "common/win/sync_os.h"
#include "common/win/thread.h"

#include <cerrno>
#include <chrono>
#include <mutex>

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace win {

namespace {

// A thread's kernel object. The running thread holds a reference of its own,
// so the object outlives whichever of handle and thread goes first; the last
// one joins the thread, or detaches it when that is the thread itself.
class thread_object_t final : public posix::waitable_object_t {
public:
    thread_object_t(thread_body_t entry, void* argument) : entry_(entry), argument_(argument) {}

    bool start() {
        add_ref();
        const int error = pthread_create(&thread_, nullptr, &thread_object_t::main, this);
        if (error != 0) {
            release();
            // EAGAIN is a lack of resources here, not a lock.
            set_last_error(error == EAGAIN ? 8 : win32_error_from_errno(error));
            return false;
        }
        started_ = true;
        return true;
    }

    // Under the signal lock, like the signalled state it goes with.
    DWORD exit_code_locked() const { return exit_code_; }
    void set_pending_exit_code(DWORD code) { pending_exit_code_ = code; }

private:
    ~thread_object_t() override {
        if (!started_)
            return;
        if (pthread_equal(pthread_self(), thread_))
            pthread_detach(thread_);
        else
            pthread_join(thread_, nullptr);
    }

    static void* main(void* self);

    void finish() {
        {
            std::lock_guard<posix::robust_mutex_t> guard(posix::signal_mutex());
            exit_code_ = pending_exit_code_;
        }
        set_signalled(true);
    }

    thread_body_t entry_;
    void* argument_;
    pthread_t thread_{};
    bool started_ = false;
    // Stays at the crash code unless the entry returns or the thread is ended
    // with a code of its own.
    DWORD pending_exit_code_ = crashed_thread_exit_code;
    DWORD exit_code_ = STILL_ACTIVE; // guarded by signal_mutex()
};

thread_local thread_object_t* t_current_thread = nullptr;

void* thread_object_t::main(void* self) {
    auto* object = static_cast<thread_object_t*>(self);
    t_current_thread = object;
    // Runs on return and on the forced unwind of exit_current_thread alike.
    struct finish_guard_t {
        thread_object_t* object;
        ~finish_guard_t() {
            t_current_thread = nullptr;
            object->finish();
            object->release();
        }
    } guard{object};
    object->pending_exit_code_ = object->entry_(object->argument_);
    return nullptr;
}

} // namespace

DWORD current_thread_id() noexcept {
    thread_local const DWORD id = static_cast<DWORD>(::syscall(SYS_gettid));
    return id;
}

DWORD tick_count() noexcept {
    const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
}

bool thread_exit_code(HANDLE thread, DWORD& code) {
    auto* object = dynamic_cast<thread_object_t*>(posix::from_handle(thread));
    if (object == nullptr) {
        set_last_error(ERROR_INVALID_HANDLE);
        return false;
    }
    std::lock_guard<posix::robust_mutex_t> guard(posix::signal_mutex());
    code = object->exit_code_locked();
    return true;
}

void exit_current_thread(DWORD exit_code) {
    if (t_current_thread != nullptr)
        t_current_thread->set_pending_exit_code(exit_code);
    pthread_exit(nullptr);
}

namespace detail {

HANDLE os_start_thread(thread_body_t entry, void* argument) {
    auto* object = new thread_object_t(entry, argument);
    if (!object->start()) {
        object->release();
        return nullptr;
    }
    return posix::to_handle(object);
}

} // namespace detail
} // namespace win

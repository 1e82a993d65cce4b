#include "common/runtime/win_thread.h"

#include "common/crash/thread_frame.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/logging/log_t.h"
#include "common/monitoring/thread_states.h"
#include "common/win/last_error.h"
#include "common/win/sync_os.h"
#include "common/win/wait.h"

namespace win {

namespace {

std::atomic<thread_frame_t> g_thread_frame{&crash::thread_crash_frame};

std::string id_text(DWORD id) {
    return num_to_string(static_cast<std::uint64_t>(id));
}

// The end of a thread: out of the monitor, then the closing line (the collection's lock is never
// taken inside the log's).
void end_thread(DWORD thread_id, const std::string& role) {
    monitoring::CThreadStatesCollection::get()->remove(thread_id);
    log_trace(logging::lib_logger(), "Thread finished. Role: '%1'.", role);
}

// The thread's entry in the monitor, for as long as the routine runs; removed
// on return and when the stack unwinds.
class monitor_registration_t {
public:
    monitor_registration_t(const std::string& role, DWORD thread_id, bool& ended)
        : thread_id_(thread_id), role_(role), ended_(ended) {
        monitoring::CThreadStatesCollection::get()->add(
            std::make_shared<monitoring::CThreadState>(role, thread_id));
    }
    ~monitor_registration_t() {
        ended_ = true;
        try {
            end_thread(thread_id_, role_);
        } catch (...) {
        }
    }
    monitor_registration_t(const monitor_registration_t&) = delete;
    monitor_registration_t& operator=(const monitor_registration_t&) = delete;

private:
    DWORD thread_id_;
    const std::string& role_;
    bool& ended_;
};

} // namespace

void set_thread_frame(thread_frame_t frame) noexcept {
    g_thread_frame.store(frame);
}

win_thread_t::win_thread_t(thread_routine_t routine, void* argument, const std::string& role)
    : routine_(routine), argument_(argument), role_(role), parent_id_(current_thread_id()) {
    handle_.reset(detail::os_start_thread(&win_thread_t::entry, this));
    if (!handle_.valid())
        throw exc::win_sys_exc_t("Cannot create thread.", last_error());
}

win_thread_t::~win_thread_t() {
    try {
        if (!handle_.valid())
            return;
        // A thread that drops its own last reference cannot wait for itself.
        if (thread_id_.load() != current_thread_id() &&
            wait_for_object(handle_.get(), wait_infinite) == wait_failed)
            throw exc::win_sys_exc_t("Thread failed to stop.", last_error());
        handle_.reset();
    } catch (const std::exception& e) {
        try {
            log_exception(logging::lib_logger(), e);
        } catch (...) {
        }
    }
}

DWORD win_thread_t::entry(void* self) {
    auto* thread = static_cast<win_thread_t*>(self);
    const DWORD thread_id = current_thread_id();
    thread->thread_id_.store(thread_id);
    const thread_frame_t frame = g_thread_frame.load();
    const DWORD code =
        frame != nullptr
            ? frame([](void* context) { return static_cast<win_thread_t*>(context)->run(); }, thread)
            : thread->run();
    // A frame that left the routine without unwinding skipped its end, the blocks it had open and
    // perhaps a log write.
    if (!thread->ended_) {
        try {
            logging::main_log()->forget_thread();
            logging::debug_log()->forget_thread();
            end_thread(thread_id, thread->role_);
        } catch (...) {
        }
    }
    return code;
}

DWORD win_thread_t::run() {
    const DWORD thread_id = thread_id_.load();
    monitor_registration_t registration(role_, thread_id, ended_);
    log_trace(logging::lib_logger(), "%1",
              format_message("Thread started. Thread id: %1, parent id: %2, role: %3", id_text(thread_id),
                             id_text(parent_id_), role_));
    return routine_(argument_);
}

void win_thread_t::stop_wait() {
    stop_wait_for(stop_wait_timeout_ms);
}

void win_thread_t::stop_wait_for(DWORD timeout_ms) {
    const DWORD result = wait_for_object(handle(), timeout_ms);
    if (result == wait_object_0)
        return;
    if (result == wait_timed_out)
        throw exc::runtime_exc_t("Thread failed to stop during specified timeout: [%1].",
                                 id_text(timeout_ms));
    throw exc::win_sys_exc_t("Thread failed to stop.", last_error());
}

std::optional<DWORD> win_thread_t::exit_code() const {
    DWORD code = 0;
    if (!thread_exit_code(handle(), code))
        throw exc::win_sys_exc_t("GetExitCodeThread() function call failed.", last_error());
    if (code == STILL_ACTIVE && wait_for_object(handle(), 0) != wait_object_0)
        return std::nullopt;
    return code;
}

} // namespace win

// A fatal signal in a worker is caught on an alternate stack (so that a stack
// overflow is caught as well), its backtrace is taken there, and the handler
// jumps back into the worker's crash frame. The dump is written from that frame,
// on the worker's own stack, and the worker ends with the crash code. The frames
// between the crash and the frame are abandoned without unwinding: locks they
// held stay held (see the README), but for the event and log locks, which the
// next owner takes over, and the frames sleep in no wait that holds a lock.
#include "common/crash/crash_filter.h"
#include "common/crash/fault_posix.h"
#include "common/crash/thread_frame.h"
#include "common/exc/exc.h"

#include <csetjmp>
#include <csignal>
#include <cxxabi.h>
#include <memory>
#include <mutex>

#include <execinfo.h>

namespace crash {

namespace {

constexpr int fatal_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr std::size_t signal_count = sizeof fatal_signals / sizeof fatal_signals[0];
// Enough for the handler, which only takes the backtrace.
constexpr std::size_t alt_stack_size = 64 * 1024;

struct armed_frame_t {
    sigjmp_buf jump;
    bool crashed = false;
    fault_t fault;
};

thread_local armed_frame_t* t_armed = nullptr;
struct sigaction g_previous_actions[signal_count];

std::size_t signal_index(int signal) {
    for (std::size_t i = 0; i < signal_count; ++i)
        if (fatal_signals[i] == signal)
            return i;
    return 0;
}

void on_fatal_signal(int signal, siginfo_t* info, void*) {
    armed_frame_t* frame = t_armed;
    if (frame == nullptr) {
        // Not a worker in its frame: the crash takes the course it would have taken without us.
        ::sigaction(signal, &g_previous_actions[signal_index(signal)], nullptr);
        if (info->si_code <= 0)
            ::raise(signal); // sent, not caused: it would not come again by itself
        return;
    }
    t_armed = nullptr;
    frame->fault.signal = signal;
    frame->fault.address = info->si_addr;
    frame->fault.frame_count = ::backtrace(frame->fault.frames, max_backtrace_frames);
    siglongjmp(frame->jump, 1);
}

void install_signal_handlers() {
    // The first backtrace loads the unwinder; that must not happen inside a handler.
    void* warm_up[1];
    ::backtrace(warm_up, 1);
    struct sigaction action = {};
    action.sa_sigaction = &on_fatal_signal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < signal_count; ++i)
        ::sigaction(fatal_signals[i], &action, &g_previous_actions[i]);
}

// The calling thread's alternate signal stack for as long as the frame lasts.
class alt_stack_t {
public:
    alt_stack_t() : memory_(new char[alt_stack_size]) {
        stack_t stack = {};
        stack.ss_sp = memory_.get();
        stack.ss_size = alt_stack_size;
        installed_ = ::sigaltstack(&stack, &previous_) == 0;
    }
    ~alt_stack_t() {
        if (installed_)
            ::sigaltstack(&previous_, nullptr);
    }
    alt_stack_t(const alt_stack_t&) = delete;
    alt_stack_t& operator=(const alt_stack_t&) = delete;

private:
    std::unique_ptr<char[]> memory_;
    stack_t previous_ = {};
    bool installed_ = false;
};

// Comes back a second time, with crashed set, when a fatal signal jumps here.
DWORD run_armed(armed_frame_t& frame, win::thread_body_t body, void* context) {
    if (sigsetjmp(frame.jump, 1) != 0) {
        frame.crashed = true;
        return win::crashed_thread_exit_code;
    }
    t_armed = &frame;
    const DWORD code = body(context);
    t_armed = nullptr;
    return code;
}

DWORD end_crashed_thread(fault_t& fault) {
    crash_filter(&fault, previous_filter_t::skip);
    return win::crashed_thread_exit_code;
}

DWORD end_after_exception(fault_t& fault, const std::string& text) {
    t_armed = nullptr;
    fault.exception_text = text;
    fault.frame_count = ::backtrace(fault.frames, max_backtrace_frames);
    return end_crashed_thread(fault);
}

} // namespace

// The forced unwind of a thread that ends itself has no exception object; the
// null check of a sanitizer build would report the handler's reference to it.
__attribute__((no_sanitize("null"))) DWORD thread_crash_frame(win::thread_body_t body, void* context) {
    static std::once_flag installed;
    std::call_once(installed, &install_signal_handlers);
    alt_stack_t alt_stack;
    armed_frame_t frame;
    try {
        const DWORD code = run_armed(frame, body, context);
        if (frame.crashed)
            return end_crashed_thread(frame.fault);
        return code;
    } catch (abi::__forced_unwind&) {
        // A thread that ends itself unwinds through here; that is no crash.
        t_armed = nullptr;
        throw;
    } catch (const std::exception& e) {
        return end_after_exception(frame.fault, exc::exception_text(e));
    } catch (...) {
        return end_after_exception(frame.fault, "Unknown exception.");
    }
}

long pass_to_previous_filter(raw_filter_t, const fault_t*) {
    // Signals keep no chain of filters; a crash outside a frame goes to the previous action instead.
    return execute_handler;
}

} // namespace crash

// A structured exception that no code of a worker handles comes to the
// process's last-chance filter on the worker's own stack; the filter writes the
// dump, runs the crash handlers and ends the worker with the crash code. A C++
// exception that leaves the routine is caught by the frame itself.
#include "common/crash/crash_filter.h"
#include "common/crash/exception_log_win32.h"
#include "common/crash/fault_win32.h"
#include "common/crash/thread_frame.h"
#include "common/monitoring/thread_states.h"

#include <mutex>

namespace crash {

namespace {

thread_local bool t_in_frame = false;

LONG WINAPI last_chance_filter(EXCEPTION_POINTERS* pointers) {
    fault_t fault{pointers};
    if (!t_in_frame)
        return crash_filter(&fault, previous_filter_t::ask);
    t_in_frame = false;
    crash_filter(&fault, previous_filter_t::skip);
    // The routine's frames are not unwound: its monitor entry goes here.
    monitoring::CThreadStatesCollection::get()->remove(::GetCurrentThreadId());
    ::ExitThread(win::crashed_thread_exit_code);
}

void install_last_chance_filter() {
    // DbgHelp is loaded now, while the process is sound.
    win32::exception_log();
    crash_context().previous_filter =
        reinterpret_cast<raw_filter_t>(::SetUnhandledExceptionFilter(&last_chance_filter));
}

DWORD end_after_exception() {
    t_in_frame = false;
    crash_filter(nullptr, previous_filter_t::skip);
    return win::crashed_thread_exit_code;
}

} // namespace

DWORD thread_crash_frame(win::thread_body_t body, void* context) {
    static std::once_flag installed;
    std::call_once(installed, &install_last_chance_filter);
    t_in_frame = true;
    try {
        const DWORD code = body(context);
        t_in_frame = false;
        return code;
    } catch (...) {
        return end_after_exception();
    }
}

} // namespace crash

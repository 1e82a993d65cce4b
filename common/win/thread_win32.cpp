#include "common/win/sync_os.h"
#include "common/win/thread.h"

#include <memory>

namespace win {

namespace {

struct start_t {
    thread_body_t entry;
    void* argument;
};

DWORD WINAPI start_routine(LPVOID parameter) {
    std::unique_ptr<start_t> start(static_cast<start_t*>(parameter));
    const thread_body_t entry = start->entry;
    void* const argument = start->argument;
    start.reset();
    return entry(argument);
}

} // namespace

DWORD current_thread_id() noexcept {
    return ::GetCurrentThreadId();
}

DWORD tick_count() noexcept {
    return ::GetTickCount();
}

bool thread_exit_code(HANDLE thread, DWORD& code) {
    return ::GetExitCodeThread(thread, &code) != FALSE;
}

void exit_current_thread(DWORD exit_code) {
    ::ExitThread(exit_code);
}

namespace detail {

HANDLE os_start_thread(thread_body_t entry, void* argument) {
    auto* start = new start_t{entry, argument};
    HANDLE thread = ::CreateThread(nullptr, 0, &start_routine, start, 0, nullptr);
    if (thread == nullptr) {
        const DWORD error = ::GetLastError();
        delete start;
        ::SetLastError(error);
    }
    return thread;
}

} // namespace detail
} // namespace win

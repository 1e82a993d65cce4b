#include "common/win/kernel_object_posix.h"
#include "common/win/last_error.h"
#include "common/win/wait.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <span>

namespace win {

namespace {

constexpr DWORD maximum_wait_objects = 64; // MAXIMUM_WAIT_OBJECTS

// The result when the wait is satisfied now; asked under the signal lock.
std::optional<DWORD> satisfied(std::span<posix::kernel_object_t* const> objects) {
    for (std::size_t i = 0; i < objects.size(); ++i)
        if (objects[i]->signalled_locked())
            return wait_object_0 + static_cast<DWORD>(i);
    return std::nullopt;
}

} // namespace

DWORD wait_for_objects(const HANDLE* handles, DWORD count, DWORD timeout_ms) {
    if (count == 0 || count > maximum_wait_objects || handles == nullptr) {
        set_last_error(ERROR_INVALID_PARAMETER);
        return wait_failed;
    }
    // On the stack: a worker abandoned in its wait by the crash frame leaves nothing on the heap.
    posix::kernel_object_t* storage[maximum_wait_objects];
    const std::span<posix::kernel_object_t* const> objects(storage, count);
    for (DWORD i = 0; i < count; ++i) {
        posix::kernel_object_t* object = posix::from_handle(handles[i]);
        if (object == nullptr || !object->is_waitable()) {
            set_last_error(ERROR_INVALID_HANDLE);
            return wait_failed;
        }
        storage[i] = object;
    }

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    for (;;) {
        std::uint32_t seen = 0;
        {
            std::lock_guard<posix::robust_mutex_t> guard(posix::signal_mutex());
            if (const std::optional<DWORD> result = satisfied(objects))
                return *result;
            seen = posix::signal_changes();
        }
        DWORD sleep_ms = wait_infinite;
        if (timeout_ms != wait_infinite) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0)
                return wait_timed_out;
            sleep_ms = static_cast<DWORD>(left.count());
        }
        posix::wait_for_signal_change(seen, sleep_ms);
    }
}

DWORD wait_for_object(HANDLE handle, DWORD timeout_ms) {
    return wait_for_objects(&handle, 1, timeout_ms);
}

} // namespace win

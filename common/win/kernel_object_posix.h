// What a HANDLE points to where there is no Win32 kernel: a counted object,
// some of which can be waited on. Waitable objects keep their state under one
// process-wide signal lock, so that a wait on several objects looks at all of
// them at once. Waiters sleep without that lock, on a count of the changes: a
// worker abandoned by the crash frame while it waits then holds nothing.
#pragma once

#include "common/win/robust_mutex_posix.h"
#include "compat/win_types.h"

#include <atomic>
#include <cstdint>

namespace win::posix {

class kernel_object_t {
public:
    kernel_object_t() = default;
    kernel_object_t(const kernel_object_t&) = delete;
    kernel_object_t& operator=(const kernel_object_t&) = delete;

    void add_ref() noexcept { refs_.fetch_add(1, std::memory_order_relaxed); }
    // Deletes the object with the last reference.
    void release() noexcept;

    virtual bool is_waitable() const noexcept { return false; }
    // Asked with signal_mutex() held.
    virtual bool signalled_locked() const noexcept { return false; }

protected:
    virtual ~kernel_object_t() = default;

private:
    std::atomic<long> refs_{1};
};

robust_mutex_t& signal_mutex() noexcept;

// The number of times an object became signalled; read under signal_mutex().
std::uint32_t signal_changes() noexcept;
// Sleeps until the count differs from seen, or timeout_ms passes (wait_infinite: no limit), or
// for no reason at all: the caller looks again under the lock.
void wait_for_signal_change(std::uint32_t seen, DWORD timeout_ms) noexcept;

// A kernel object with a signalled state (events, threads).
class waitable_object_t : public kernel_object_t {
public:
    bool is_waitable() const noexcept override { return true; }
    bool signalled_locked() const noexcept override { return signalled_; }

    // Changes the state and wakes every waiter to look again.
    void set_signalled(bool signalled);
    bool signalled() const;

private:
    bool signalled_ = false; // guarded by signal_mutex()
};

inline HANDLE to_handle(kernel_object_t* object) noexcept {
    return static_cast<HANDLE>(object);
}
// Null for null and INVALID_HANDLE_VALUE.
kernel_object_t* from_handle(HANDLE handle) noexcept;

} // namespace win::posix

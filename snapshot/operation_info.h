// The progress record of a task, polled by the backup server.
//
// A task's worker writes it and the main thread reads it, without a lock: the
// worker publishes completion last, and a reader trusts the outcome fields only
// after it has seen completion. That ordering is the whole protocol, so it is
// spelled out here once instead of at every reader and writer.
//
// The outcome fields are atomics of their own as well: a worker that fails while
// completing the backup overwrites an outcome that was published long before,
// and a reader may be copying it at that moment.
#pragma once

#include "compat/win_types.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace impl {

// What a reader sees at one moment: the record's fields as values.
struct SOperationStatus {
    GUID snapshotId;
    std::wstring errDescription;
    bool isCompleted;
    bool isSucceeded;
    std::int64_t creationTime;
    std::int64_t completedTime;
};

} // namespace impl

class COperationInfo {
public:
    COperationInfo(const GUID& id, std::uint64_t createdAt) : snapshotId(id), creationTime(createdAt) {}
    COperationInfo(const COperationInfo&) = delete;
    COperationInfo& operator=(const COperationInfo&) = delete;

    std::atomic<bool> isCompleted{false};
    std::atomic<bool> isSucceeded{true};
    // Replaced whole, never changed in place.
    std::atomic<std::shared_ptr<const std::wstring>> errDescription{std::make_shared<const std::wstring>()};
    const GUID snapshotId;
    const std::uint64_t creationTime;
    std::atomic<std::uint64_t> completedTime{0};

    bool IsCompleted() const { return isCompleted.load(std::memory_order_acquire); }

    // Worker side: the outcome first, completion last.
    void MarkSucceeded(std::uint64_t now) {
        isSucceeded.store(true, std::memory_order_relaxed);
        completedTime.store(now, std::memory_order_relaxed);
        isCompleted.store(true, std::memory_order_release);
    }
    void MarkFailed(const std::wstring& description, std::uint64_t now) {
        isSucceeded.store(false, std::memory_order_relaxed);
        errDescription.store(std::make_shared<const std::wstring>(description), std::memory_order_relaxed);
        completedTime.store(now, std::memory_order_relaxed);
        isCompleted.store(true, std::memory_order_release);
    }

    // Reader side. While the task runs its outcome fields may be under the
    // worker's hands; they are reported with their values at task creation.
    impl::SOperationStatus Read() const {
        impl::SOperationStatus status{
            snapshotId, std::wstring(), false, true, static_cast<std::int64_t>(creationTime), 0};
        if (!IsCompleted())
            return status;
        status.isCompleted = true;
        status.isSucceeded = isSucceeded.load(std::memory_order_relaxed);
        status.errDescription = *errDescription.load(std::memory_order_relaxed);
        status.completedTime = static_cast<std::int64_t>(completedTime.load(std::memory_order_relaxed));
        return status;
    }
};

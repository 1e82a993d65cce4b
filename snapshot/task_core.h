// The core of every task, a snapshot task on the host as an import task on a proxy:
// the record that the worker and the dispatcher share, and the worker's road from its
// start to its end. What a task makes, keeps and finishes is the task's own.
#pragma once

#include "common/exc/exc.h"
#include "common/logging/log.h"
#include "compat/win_types.h"
#include "snapshot/locker_job_info.h"
#include "snapshot/operation_info.h"
#include "snapshot/task_worker.h"
#include "snapshot/worker_com.h"

#include <exception>
#include <memory>
#include <string>

namespace win {
class win_manual_reset_event_t;
}

namespace impl {
inline constexpr DWORD HoldLimitMs = 604800000; // seven days
}

// How long a worker holds the snapshot for a silent server, and how long closing
// waits for the worker; fixed for the tool, shorter in tests.
struct SSnapshotTaskLimits {
    DWORD holdMs = impl::HoldLimitMs;
    DWORD joinMs = impl::JoinLimitMs;
};

namespace impl {

// Who a task works for and the id the server knows it by.
struct STaskIdentity {
    std::wstring jobName;
    std::wstring backupConsole;
    GUID snapshotId = GUID_NULL;
};

// What the worker shares with the dispatcher; kept alive by both, so that a worker
// that outlives the join still has it.
struct STaskRecord {
    STaskRecord(const STaskIdentity& identity, DWORD holdLimitMs);

    const std::shared_ptr<COperationInfo> operationInfo;
    const GUID snapshotId;
    const std::shared_ptr<wrap::locks::CLockerJobInfo> jobInfo;
    // Ends the holding and cancels the waits of a task still being made.
    const std::shared_ptr<win::win_manual_reset_event_t> CloseEvent;
    const DWORD holdMs;
};

// Returns once the event is set or the limit has passed; a failed wait throws
// exc::win_sys_exc_t.
void WaitForClose(const win::win_manual_reset_event_t& closeEvent, DWORD limitMs = HoldLimitMs);

// Every line of the failure goes into the error description.
void ReportFailure(COperationInfo& info, const std::exception& e);
// Publishes success, then holds what the worker made until the task is closed.
void PublishAndHold(const STaskRecord& task);

// The worker's product, which is the worker's own until completion has been published.
template <typename Result>
const Result& RequireCompleted(const STaskRecord& task, const std::shared_ptr<Result>& result,
                               const char* missing) {
    if (!task.operationInfo->IsCompleted() || !result)
        throw exc::runtime_exc_t(missing);
    return *result;
}

// Whether a worker that cannot enter COM gives a verdict; one that gives none leaves
// its task looking busy until it is closed.
enum class ComFailure { Reported, Unreported };

struct STaskWorkerKind {
    const char* role;
    const char* entering;
    const char* leaving;
    ComFailure comFailure;
};

// Runs a step whose failure is the task's verdict: published, then thrown on.
template <typename Step> auto Reported(const STaskRecord& task, Step step) {
    try {
        return step();
    } catch (const std::exception& e) {
        ReportFailure(*task.operationInfo, e);
        throw;
    }
}

// The worker's road: make the task's object (which keeps its result in the record),
// publish success and hold, finish, and release the object in the apartment that
// made it. Unwinding releases whatever part of it stood.
template <typename Make, typename Finish>
void RunTaskWorker(const STaskRecord& task, const STaskWorkerKind& kind, Make make, Finish finish) {
    log_scope_t scope(logging::tool_logger(), kind.entering);
    if (kind.comFailure == ComFailure::Reported)
        Reported(task, InitializeWorkerCom);
    else
        InitializeWorkerCom();
    auto made = Reported(task, [&] {
        auto object = make();
        PublishAndHold(task);
        finish(*object);
        return object;
    });
    scope.finish(kind.leaving);
    made.reset();
    UninitializeWorkerCom();
}

// Starts the worker on the record: the worker shares the record, not the task object,
// so that destroying the object is what ends the task.
template <typename Record, typename Proc>
std::unique_ptr<CTaskWorker> StartTaskWorker(const STaskWorkerKind& kind,
                                             const std::shared_ptr<Record>& record, Proc proc,
                                             DWORD joinLimitMs) {
    return std::make_unique<CTaskWorker>(
        kind.role, record->CloseEvent, [task = record, proc] { proc(*task); }, joinLimitMs);
}

} // namespace impl

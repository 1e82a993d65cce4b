#include "snapshot/task_core.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/event.h"
#include "common/win/last_error.h"
#include "common/win/wait.h"

namespace impl {

STaskRecord::STaskRecord(const STaskIdentity& identity, DWORD holdLimitMs)
    : operationInfo(std::make_shared<COperationInfo>(identity.snapshotId, local_filetime_now())),
      snapshotId(identity.snapshotId),
      jobInfo(std::make_shared<wrap::locks::CLockerJobInfo>(identity.jobName, identity.backupConsole)),
      CloseEvent(std::make_shared<win::win_manual_reset_event_t>()), holdMs(holdLimitMs) {}

void WaitForClose(const win::win_manual_reset_event_t& closeEvent, DWORD limitMs) {
    const DWORD result = win::wait_for_object(closeEvent.handle(), limitMs);
    // A server that never closes the task gets the same ending as one that does.
    if (result == win::wait_object_0 || result == win::wait_timed_out)
        return;
    throw exc::win_sys_exc_t(win::last_error());
}

void ReportFailure(COperationInfo& info, const std::exception& e) {
    info.MarkFailed(to_unicode_nothrow(exc::exception_text(e)), local_filetime_now());
}

void PublishAndHold(const STaskRecord& task) {
    task.operationInfo->MarkSucceeded(local_filetime_now());
    log_info(logging::tool_logger(), "Waiting for backup completion");
    WaitForClose(*task.CloseEvent, task.holdMs);
}

} // namespace impl

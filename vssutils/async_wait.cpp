#include "vssutils/async_wait.h"

#include "common/format/format.h"
#include "common/logging/log.h"
#include "vssutils/vss_exc.h"

#include <chrono>
#include <thread>

namespace VSSUtils {

namespace {

bool cancel_operation(AsyncPtr async, log_scope_t& scope) {
    // Whatever Cancel says, the wait is over: its result is shown, not judged.
    HRESULT cancelStatus = async->Cancel();
    scope.finish("Operation cancelled. VSS cancel status: [%1]",
                 hex_to_string(static_cast<std::uint32_t>(cancelStatus)));
    return false;
}

HRESULT query_status(AsyncPtr async) {
    HRESULT status = S_OK;
    HRESULT hr = async->QueryStatus(&status, nullptr);
    // Only S_OK counts: a warning from the call itself means the status wasn't given.
    if (hr != S_OK)
        ThrowVssFailure(hr, "Failed to query status of async operation");
    return status;
}

} // namespace

bool WaitAsyncOperation(AsyncPtr async, ITestCancelCallback* probe, const std::string& waitText,
                        const std::string& unknownStatusText) {
    log_scope_t scope(logging::tool_logger(), waitText);
    for (;;) {
        if (probe && probe->TestCancel())
            return cancel_operation(async, scope);
        HRESULT status = query_status(async);
        if (status == VSS_S_ASYNC_PENDING) {
            std::this_thread::sleep_for(std::chrono::milliseconds(AsyncPollIntervalMs));
            continue;
        }
        if (status == VSS_S_ASYNC_FINISHED) {
            scope.close_quietly();
            return true;
        }
        if (status == VSS_S_ASYNC_CANCELLED) {
            scope.finish("Operation cancelled by 3-rd party");
            return false;
        }
        ThrowVssFailure(status, unknownStatusText);
    }
}

bool WaitForAsync(AsyncPtr async, ITestCancelCallback* probe) {
    return WaitAsyncOperation(async, probe, "Waiting for completition of VSS async operation",
                              "Unknown status of async operation");
}

} // namespace VSSUtils

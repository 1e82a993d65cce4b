#include "vssutils/writer_status.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "compat/unique_any.h"
#include "vssutils/async_wait.h"
#include "vssutils/vss_exc.h"

#include <iterator>

namespace VSSUtils {

namespace {

const int first_failed_state = 6;
const char* const failed_state_names[] = {
    "VSS_WS_FAILED_AT_IDENTIFY",
    "VSS_WS_FAILED_AT_PREPARE_BACKUP",
    "VSS_WS_FAILED_AT_PREPARE_SNAPSHOT",
    "VSS_WS_FAILED_AT_FREEZE",
    "VSS_WS_FAILED_AT_THAW",
    "VSS_WS_FAILED_AT_POST_SNAPSHOT",
    "VSS_WS_FAILED_AT_BACKUP_COMPLETE",
    "VSS_WS_FAILED_AT_PRE_RESTORE",
    "VSS_WS_FAILED_AT_POST_RESTORE",
    "VSS_WS_FAILED_AT_BACKUPSHUTDOWN",
};

// The system's mark for a writer that gave no name: the letter n and the BEL character.
const char* const missing_writer_name = "n\x07";

struct writer_status_t {
    VSS_ID instanceId = GUID_NULL;
    VSS_ID writerId = GUID_NULL;
    compat::unique_bstr_t name;
    VSS_WRITER_STATE state = VSS_WS_UNKNOWN;
    HRESULT failure = S_OK;
};

std::string writer_name_text(const compat::unique_bstr_t& name) {
    return !name ? std::string(missing_writer_name) : to_ansi(name.text());
}

[[noreturn]] void report_failed_writer(const writer_status_t& status, const std::string& stateName) {
    std::string name = writer_name_text(status.name);
    log_exception(logging::tool_logger(), "Writer '%1' is failed at '%2'. [%3], [%4]. ", name, stateName,
                  num_to_string(static_cast<std::int32_t>(status.state)),
                  hex_to_string(static_cast<std::uint32_t>(status.failure)), VssErrorOnly(status.failure));
    // A failed state without a failure code still fails, with the generic failure's text.
    HRESULT shown = status.failure < 0 ? status.failure : E_FAIL;
    ThrowVssFailure(shown, format_message("Writer '%1' is failed at '%2'.", name, stateName));
}

void check_writer(BackupComponentsPtr components, UINT index, bool logEachWriter) {
    writer_status_t status;
    HRESULT hr = components->GetWriterStatus(index, &status.instanceId, &status.writerId, status.name.put(),
                                             &status.state, &status.failure);
    if (hr < 0)
        ThrowVssFailure(hr, format_message("Failed to get status info for specific writer. Index=[%1]",
                                           num_to_string(static_cast<std::uint64_t>(index))));
    if (const char* stateName = FailedWriterStateName(status.state))
        report_failed_writer(status, stateName);
    if (logEachWriter)
        log_info(logging::tool_logger(), "Writer '%1' is ok.", writer_name_text(status.name));
}

} // namespace

const char* FailedWriterStateName(int state) {
    int offset = state - first_failed_state;
    if (offset < 0 || offset >= static_cast<int>(std::size(failed_state_names)))
        return nullptr;
    return failed_state_names[offset];
}

bool VerifyWriters(BackupComponentsPtr components, ITestCancelCallback* probe, bool logEachWriter) {
    return exc::traced("Failed to verify writers state.", [&] {
        AsyncPtr async;
        CheckVss(components->GatherWriterStatus(async.put()), "Failed to collect writers status");
        if (!WaitForAsync(async, probe))
            return false;
        UINT count = 0;
        CheckVss(components->GetWriterStatusCount(&count), "Failed to get number of writer statuses");
        for (UINT index = 0; index < count; ++index)
            check_writer(components, index, logEachWriter);
        return true;
    });
}

bool CheckWritersStatus(BackupComponentsPtr components, ITestCancelCallback* probe) {
    log_scope_t scope(logging::tool_logger(), "Checking writers status.");
    bool result = VerifyWriters(components, probe, true);
    scope.finish("Writers state check is succeeded.");
    return result;
}

} // namespace VSSUtils

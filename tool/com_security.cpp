#include "tool/com_security.h"

#include "common/exc/exc.h"
#include "common/logging/log.h"
#include "tool/process_platform.h"

namespace tool {

void SetProcessComSecurity() {
    log_info(logging::tool_logger(), "Initializing COM security");
    const HRESULT result = InitializeComSecurityForProcess();
    if (result != S_OK)
        log_exception(logging::tool_logger(),
                      exc::com_exc_t(result, "Failed to set COM security value for the process."));
}

} // namespace tool

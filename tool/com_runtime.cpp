#include "tool/com_runtime.h"

#include "common/exc/exc.h"
#include "common/logging/log.h"
#include "tool/process_platform.h"

CComRuntimeGuard::CComRuntimeGuard() {
    const HRESULT result = InitializeComForThread();
    if (FAILED(result))
        throw exc::com_exc_t(result, "Cannot initialize COM runtime");
}

CComRuntimeGuard::~CComRuntimeGuard() {
    UninitializeComForThread();
}

void SetProcessComSecurity() {
    log_info(logging::tool_logger(), "Initializing COM security");
    const HRESULT result = InitializeComSecurityForProcess();
    if (result != S_OK)
        log_exception(logging::tool_logger(),
                      exc::com_exc_t(result, "Failed to set COM security value for the process."));
}

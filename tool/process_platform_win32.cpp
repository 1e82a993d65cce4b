#include "tool/process_platform.h"

#include "common/exc/convert.h"

namespace tool {

HRESULT InitializeComSecurityForProcess() {
    return CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_PKT_PRIVACY,
                                RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_STATIC_CLOAKING, nullptr);
}

// The system's heap keeps freed memory for reuse by itself.
void KeepFreedMemoryForNextRequests() {}

// A write to a pipe that nobody reads fails with ERROR_NO_DATA here, and nothing else happens.
void KeepWritesToClosedOutputsHarmless() {}

void TerminateProcessNow(int exitCode) {
    ExitProcess(static_cast<UINT>(exitCode));
}

std::wstring PipeNameFromCommandLine(const std::string& name) {
    return to_unicode(name);
}

} // namespace tool

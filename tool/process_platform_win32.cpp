#include "tool/process_platform.h"

#include "common/format/format.h"

HRESULT InitializeComSecurityForProcess() {
    return CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_PKT_PRIVACY,
                                RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_STATIC_CLOAKING, nullptr);
}

void TerminateProcessNow(int exitCode) {
    ExitProcess(static_cast<UINT>(exitCode));
}

std::wstring PipeNameFromCommandLine(const std::string& name) {
    return to_unicode(name);
}

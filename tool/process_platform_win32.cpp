#include "tool/process_platform.h"

#include <shellapi.h>

std::vector<std::wstring> CollectProcessArguments(int, const char* const[]) {
    std::vector<std::wstring> arguments;
    int count = 0;
    LPWSTR* tokens = CommandLineToArgvW(GetCommandLineW(), &count);
    if (tokens == nullptr)
        return arguments;
    struct local_free_guard {
        LPWSTR* tokens;
        ~local_free_guard() { LocalFree(tokens); }
    } release{tokens};
    for (int i = 0; i < count; ++i)
        arguments.emplace_back(tokens[i]);
    return arguments;
}

HRESULT InitializeComForThread() {
    return CoInitialize(nullptr);
}

void UninitializeComForThread() {
    CoUninitialize();
}

HRESULT InitializeComSecurityForProcess() {
    return CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_PKT_PRIVACY,
                                RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_STATIC_CLOAKING, nullptr);
}

void TerminateProcessNow(int exitCode) {
    ExitProcess(static_cast<UINT>(exitCode));
}

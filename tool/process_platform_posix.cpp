#include "tool/process_platform.h"

#include "common/format/format.h"

#include <unistd.h>

std::vector<std::wstring> CollectProcessArguments(int argc, const char* const argv[]) {
    std::vector<std::wstring> arguments;
    for (int i = 0; i < argc; ++i)
        arguments.push_back(to_unicode(argv[i]));
    return arguments;
}

HRESULT InitializeComForThread() {
    return S_OK;
}

void UninitializeComForThread() {}

HRESULT InitializeComSecurityForProcess() {
    return S_OK;
}

void TerminateProcessNow(int exitCode) {
    _exit(exitCode);
}

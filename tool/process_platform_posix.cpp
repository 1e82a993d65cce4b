#include "tool/process_platform.h"

#include <unistd.h>

HRESULT InitializeComSecurityForProcess() {
    return S_OK;
}

void TerminateProcessNow(int exitCode) {
    _exit(exitCode);
}

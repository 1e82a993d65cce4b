#include "tool/process_platform.h"

#include "common/win/native_name_posix.h"

#include <unistd.h>

HRESULT InitializeComSecurityForProcess() {
    return S_OK;
}

void TerminateProcessNow(int exitCode) {
    _exit(exitCode);
}

// The name's bytes name the socket: a backup server that connects with the bytes it passed
// finds it, even where they are not UTF-8.
std::wstring PipeNameFromCommandLine(const std::string& name) {
    return win::wide_from_name_bytes(name);
}

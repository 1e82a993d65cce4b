// What the entry point asks of the operating system.
#pragma once

#include "compat/win_types.h"

#include <string>
#include <vector>

// Every token of the process command line, program name included, as the
// system splits it. Empty when the system cannot split it.
std::vector<std::wstring> CollectProcessArguments(int argc, const char* const argv[]);

// COM for the calling thread, and the process-wide security settings. Where
// there is no COM these succeed without doing anything.
HRESULT InitializeComForThread();
void UninitializeComForThread();
HRESULT InitializeComSecurityForProcess();

// Ends the process at once with the given code: no destructors, no exit list.
[[noreturn]] void TerminateProcessNow(int exitCode);

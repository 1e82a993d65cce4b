// What the entry point asks of the operating system beyond the common library.
#pragma once

#include "compat/win_types.h"

#include <string>

// The process-wide COM security settings; where there is no COM this succeeds
// without doing anything.
HRESULT InitializeComSecurityForProcess();

// Ends the process at once with the given code: no destructors, no exit list.
[[noreturn]] void TerminateProcessNow(int exitCode);

// The pipe's name as the command line gave it, in the wide form that the pipe server takes.
std::wstring PipeNameFromCommandLine(const std::string& name);

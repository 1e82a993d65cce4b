// What the entry point asks of the operating system beyond the common library.
#pragma once

#include "compat/win_types.h"

#include <string>

namespace tool {

// The process-wide COM security settings; where there is no COM this succeeds
// without doing anything.
HRESULT InitializeComSecurityForProcess();

// The allocator keeps what a request of megabytes frees for the next one, rather than giving it
// back to the system and taking it again page by page: the server polls with such requests.
void KeepFreedMemoryForNextRequests();

// A standard output or error that nobody reads any more makes a write to it fail, as it does on
// Windows, instead of ending the process: the backup server may have dropped them and still
// wants its pipe served.
void KeepWritesToClosedOutputsHarmless();

// Ends the process at once with the given code: no destructors, no exit list.
[[noreturn]] void TerminateProcessNow(int exitCode);

// The pipe's name as the command line gave it, in the wide form that the pipe server takes.
std::wstring PipeNameFromCommandLine(const std::string& name);

} // namespace tool

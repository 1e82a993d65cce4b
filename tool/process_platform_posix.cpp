#include "tool/process_platform.h"

#include "common/win/native_name_posix.h"

#include <csignal>

#include <malloc.h>
#include <unistd.h>

namespace tool {

HRESULT InitializeComSecurityForProcess() {
    return S_OK;
}

// Blocks up to the allocator's largest threshold come from its heap, whose top is given back only
// when more than twice that lies free there: a request's buffers of tens of megabytes are
// reused, and the most the process keeps beyond what it uses is bounded. Where the allocator
// takes no such settings (under a sanitizer), nothing changes.
void KeepFreedMemoryForNextRequests() {
    constexpr int largest_heap_block = 32 << 20;
    ::mallopt(M_MMAP_THRESHOLD, largest_heap_block);
    ::mallopt(M_TRIM_THRESHOLD, 2 * largest_heap_block);
}

void KeepWritesToClosedOutputsHarmless() {
    ::signal(SIGPIPE, SIG_IGN);
}

void TerminateProcessNow(int exitCode) {
    _exit(exitCode);
}

// The name's bytes name the socket: a backup server that connects with the bytes it passed
// finds it, even where they are not UTF-8.
std::wstring PipeNameFromCommandLine(const std::string& name) {
    return win::wide_from_name_bytes(name);
}

} // namespace tool

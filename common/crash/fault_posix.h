// What the POSIX crash frame catches: a fatal signal with the stack it came
// from, or a C++ exception that left the thread's routine.
#pragma once

#include <string>

namespace crash {

inline constexpr int max_backtrace_frames = 64;

struct fault_t {
    // 0 when a C++ exception left the routine.
    int signal = 0;
    void* address = nullptr;
    // Filled inside the signal handler, so no allocation: a fixed array.
    void* frames[max_backtrace_frames] = {};
    int frame_count = 0;
    std::string exception_text;
};

} // namespace crash

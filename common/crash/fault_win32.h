// What the Windows crash frame catches: the exception pointers of a structured
// exception, or none for a C++ exception that left the thread's routine.
#pragma once

#include "compat/win_types.h"

namespace crash {

struct fault_t {
    EXCEPTION_POINTERS* pointers = nullptr;
};

} // namespace crash

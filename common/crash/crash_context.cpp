#include "common/crash/crash_context.h"

namespace crash {

crash_context_t& crash_context() {
    static crash_context_t context;
    return context;
}

} // namespace crash

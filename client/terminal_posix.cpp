#include "client/terminal.h"

#include <iostream>
#include <unistd.h>

namespace client {

bool IsTerminal(const std::ostream& out) {
    if (&out == &std::cout)
        return ::isatty(STDOUT_FILENO) == 1;
    if (&out == &std::cerr)
        return ::isatty(STDERR_FILENO) == 1;
    return false;
}

} // namespace client

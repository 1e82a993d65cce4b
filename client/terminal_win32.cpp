#include "client/terminal.h"

#include <cstdio>
#include <io.h>
#include <iostream>

namespace client {

bool IsTerminal(const std::ostream& out) {
    if (&out == &std::cout)
        return _isatty(_fileno(stdout)) != 0;
    if (&out == &std::cerr)
        return _isatty(_fileno(stderr)) != 0;
    return false;
}

} // namespace client

// Whether a stream of the client shows on a terminal, where a line can be redrawn
// in place; elsewhere (a file, a pipe, a test's string) progress goes line by line.
#pragma once

#include <iosfwd>

namespace client {

// True only for std::cout or std::cerr when its descriptor is a terminal.
bool IsTerminal(const std::ostream& out);

} // namespace client

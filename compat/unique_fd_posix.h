// One file descriptor, closed when its owner goes.
#pragma once

#include "compat/unique_any.h"

#include <unistd.h>

namespace compat {

struct fd_traits {
    using pointer = int;
    static pointer invalid() noexcept { return -1; }
    static bool is_valid(pointer fd) noexcept { return fd >= 0; }
    static void close(pointer fd) noexcept { ::close(fd); }
};
using unique_fd_t = unique_any_t<fd_traits>;

} // namespace compat

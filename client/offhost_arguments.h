// offhost --host-pipe NAME --proxy-pipe NAME --spec FILE --to DIR [backup's other options]
#pragma once

#include "client/backup_arguments.h"

#include <string>
#include <vector>

namespace client {

struct offhost_arguments_t {
    std::wstring hostPipe;
    std::wstring proxyPipe;
    backup_arguments_t backup;
};

// Both pipes are needed; the other options are those of backup. Throws usage_error_t.
offhost_arguments_t ParseOffhostArguments(const std::vector<std::string>& arguments);

} // namespace client

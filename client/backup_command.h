// "backup --spec FILE --to DIR [--fail-vm ID ...]": the client plays the backup
// server through a whole snapshot: start it, wait for it, list and copy each VM's
// files out of the shadow copies, report each VM, close it, and show a summary.
#pragma once

#include "client/subcommand.h"

namespace client {

int RunBackupCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                     std::ostream& out);

} // namespace client

// "offhost --host-pipe A --proxy-pipe B --spec FILE --to DIR": the client plays the
// backup server through an off-host backup. The host's tool makes a transportable
// snapshot and lists each VM's items on the host's volumes; the proxy's tool imports
// the snapshot and converts those paths to its shadow copies, from which the client
// copies the files; each VM is reported to the host, and both tasks are closed.
//
// The client reads the files as the proxy does: on the simulated host, MIRRACK_HOST
// names the proxy's host.
#pragma once

#include "client/subcommand.h"

namespace client {

int RunOffhostCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                      std::ostream& out);

} // namespace client

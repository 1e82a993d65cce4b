#include "client/backup_command.h"
#include "client/call_command.h"
#include "client/offhost_command.h"
#include "client/subcommand.h"

namespace client {

const std::vector<subcommand_t>& Subcommands() {
    static const std::vector<subcommand_t> table = {
        {"call", "call COMMAND [Name=value | Name=@file | Name=@@text ...]",
         "send one command and print its response", &RunCallCommand},
        {"backup", "backup --spec FILE --to DIR [--fail-vm ID ...] [--job NAME] [--console NAME]",
         "back up the specification's VMs into DIR as a backup server does", &RunBackupCommand},
        {"offhost", "offhost --host-pipe NAME --proxy-pipe NAME --spec FILE --to DIR [backup's options]",
         "back up off-host: snapshot on the host, import and copy on the proxy (MIRRACK_HOST: the proxy)",
         &RunOffhostCommand, true},
    };
    return table;
}

} // namespace client

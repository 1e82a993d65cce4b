#include "client/backup_command.h"
#include "client/call_command.h"
#include "client/check_command.h"
#include "client/offhost_command.h"
#include "client/spec_command.h"
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
        {"spec",
         "spec --vm GUID [--vm GUID ...] [--crash-consistent GUID] [--exclude-disk GUID=PATH] "
         "[--aux-file GUID=PATH] [--provider KIND:GUID] [--volume-provider MOUNTPOINT=KIND:GUID] [--offhost] "
         "[--csv-writer] -o FILE",
         "write a backup specification (KIND: system, software, hardware, fileshare or csv)", &RunSpecCommand,
         true},
        {"check",
         "check --spec FILE [--report FILE] [--tool-log FILE] [--host-pipe NAME --proxy-pipe NAME "
         "[--proxy-log FILE]] [--job NAME] [--console NAME]",
         "a trial backup that copies nothing: reads samples of each item, reports every VM not backed up",
         &RunCheckCommand, true},
    };
    return table;
}

} // namespace client

#include "client/call_command.h"
#include "client/subcommand.h"

namespace client {

const std::vector<subcommand_t>& Subcommands() {
    static const std::vector<subcommand_t> table = {
        {"call", "call COMMAND [Name=value | Name=@file | Name=@@text ...]",
         "send one command and print its response", &RunCallCommand},
    };
    return table;
}

} // namespace client

// "spec --vm GUID [--vm GUID ...] [options] -o FILE": the backup specification that a
// backup server would send, written from the command line, for trying the tool on a host
// where no server has written one.
#pragma once

#include "client/backup_spec_writer.h"
#include "client/subcommand.h"

#include <filesystem>

namespace client {

struct spec_arguments_t {
    backup_spec_t spec;
    std::filesystem::path outFile;
};

// Throws usage_error_t for a bad GUID, an unknown provider kind, a VM named by an option
// but by no --vm, and options that contradict each other, saying which.
spec_arguments_t ParseSpecArguments(const std::vector<std::string>& arguments);

int RunSpecCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                   std::ostream& out);

} // namespace client

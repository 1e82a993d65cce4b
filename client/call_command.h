// "call COMMAND [Name=value ...]": one command, its response printed.
#pragma once

#include "client/request_arguments.h"
#include "client/subcommand.h"

namespace client {

// "Name=value" is a text argument; "Name=@file" sends the file's bytes encoded;
// "Name=@@text" is the text "@text". Throws usage_error_t for a malformed one.
void AddCommandLineArgument(CRequestArguments& request, const std::string& argument);

int RunCallCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                   std::ostream& out);

} // namespace client

// The subcommands of mirrack-client. Each lives in a file of its own and is listed
// once in the table of subcommands.cpp.
#pragma once

#include "compat/win_types.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace client {

// Exit statuses of the client.
inline constexpr int exit_success = 0;
inline constexpr int exit_error_response = 1;
inline constexpr int exit_usage = 2;
inline constexpr int exit_failure = 3;

struct client_options_t {
    std::wstring pipeName;
    DWORD connectTimeoutMs = 10000;
    // Print frames as they came, not in readable form.
    bool raw = false;
};

struct subcommand_t {
    const char* name;
    const char* usage;
    const char* summary;
    // The arguments behind the subcommand's name. Returns the exit status; a usage
    // error is reported by throwing usage_error_t.
    int (*run)(const client_options_t& options, const std::vector<std::string>& arguments, std::ostream& out);
    // Needs no --pipe: speaks to no server, or names its servers' pipes by options of its own.
    bool namesItsPipes = false;
};

struct usage_error_t {
    std::string text;
};

const std::vector<subcommand_t>& Subcommands();

// The whole command line behind the program name; returns the exit status.
int RunClient(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

} // namespace client

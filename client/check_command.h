// "check --spec FILE [--report FILE] [--tool-log FILE]" through --pipe, or off-host with
// --host-pipe and --proxy-pipe: a trial backup that copies nothing and changes nothing.
// It drives the tool through the whole road as a backup server does, reads samples of
// each item on the shadow copies instead of copying it, reports every VM as not backed
// up, and ends with a table and, if asked, a report to send back.
#pragma once

#include "client/subcommand.h"

#include <filesystem>
#include <string>
#include <vector>

namespace client {

struct check_arguments_t {
    std::filesystem::path specFile;
    std::filesystem::path reportFile;
    // The -log paths the tools were started with, for their versions and their logs in the report.
    std::filesystem::path toolLog;
    std::filesystem::path proxyLog;
    // Off-host when both are given.
    std::wstring hostPipe;
    std::wstring proxyPipe;
    std::wstring jobName = L"Field check by mirrack-client";
    std::wstring backupConsole = L"mirrack-client";

    bool Offhost() const { return !hostPipe.empty(); }
};

// Throws usage_error_t; pipeName is the client's --pipe, which an off-host check doesn't take.
check_arguments_t ParseCheckArguments(const std::vector<std::string>& arguments,
                                      const std::wstring& pipeName);

int RunCheckCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                    std::ostream& out);

} // namespace client

// backup --spec FILE --to DIR [--fail-vm ID ...] [--job NAME] [--console NAME]
#pragma once

#include "compat/win_types.h"

#include <filesystem>
#include <string>
#include <vector>

namespace client {

struct backup_arguments_t {
    std::filesystem::path specFile;
    std::filesystem::path targetDir;
    // VMs to report as failed whatever their copy gave: how a server's own failure looks to the host.
    std::vector<GUID> failVms;
    std::wstring jobName = L"Backup by mirrack-client";
    std::wstring backupConsole = L"mirrack-client";
};

// Options as "--name value" or "--name=value". Throws usage_error_t.
backup_arguments_t ParseBackupArguments(const std::vector<std::string>& arguments);

// The value of "--name value" or "--name=value" at position i (i moves past it), or
// false when the word is another option. Throws usage_error_t for a missing value.
bool TakeOptionValue(const std::vector<std::string>& words, std::size_t& i, const std::string& name,
                     std::string& value);

bool IsListed(const std::vector<GUID>& ids, const GUID& id);

} // namespace client

#include "client/backup_arguments.h"

#include "client/subcommand.h"
#include "common/exc/convert.h"
#include "common/format/format.h"

#include <algorithm>

namespace client {

namespace {

GUID vm_id_of(const std::string& text) {
    try {
        return string_to_guid(text);
    } catch (const std::exception&) {
        throw usage_error_t{"--fail-vm takes a VM id (a GUID): '" + text + "'."};
    }
}

} // namespace

bool TakeOptionValue(const std::vector<std::string>& words, std::size_t& i, const std::string& name,
                     std::string& value) {
    const std::string& word = words[i];
    if (word.rfind(name + "=", 0) == 0) {
        value = word.substr(name.size() + 1);
    } else if (word == name) {
        if (i + 1 >= words.size())
            throw usage_error_t{name + " needs a value."};
        value = words[++i];
    } else {
        return false;
    }
    if (value.empty())
        throw usage_error_t{name + " needs a value."};
    return true;
}

backup_arguments_t ParseBackupArguments(const std::vector<std::string>& arguments) {
    backup_arguments_t parsed;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string value;
        if (TakeOptionValue(arguments, i, "--spec", value))
            parsed.specFile = value;
        else if (TakeOptionValue(arguments, i, "--to", value))
            parsed.targetDir = value;
        else if (TakeOptionValue(arguments, i, "--fail-vm", value))
            parsed.failVms.push_back(vm_id_of(value));
        else if (TakeOptionValue(arguments, i, "--job", value))
            parsed.jobName = to_unicode(value);
        else if (TakeOptionValue(arguments, i, "--console", value))
            parsed.backupConsole = to_unicode(value);
        else
            throw usage_error_t{"backup doesn't take '" + arguments[i] + "'."};
    }
    if (parsed.specFile.empty() || parsed.targetDir.empty())
        throw usage_error_t{"backup needs --spec FILE and --to DIR."};
    return parsed;
}

bool IsListed(const std::vector<GUID>& ids, const GUID& id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

} // namespace client

#include "client/offhost_arguments.h"

#include "client/subcommand.h"
#include "common/exc/convert.h"
#include "common/format/format.h"

namespace client {

offhost_arguments_t ParseOffhostArguments(const std::vector<std::string>& arguments) {
    offhost_arguments_t parsed;
    std::vector<std::string> backupWords;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string value;
        if (TakeOptionValue(arguments, i, "--host-pipe", value))
            parsed.hostPipe = to_unicode(value);
        else if (TakeOptionValue(arguments, i, "--proxy-pipe", value))
            parsed.proxyPipe = to_unicode(value);
        else
            backupWords.push_back(arguments[i]);
    }
    if (parsed.hostPipe.empty() || parsed.proxyPipe.empty())
        throw usage_error_t{"offhost needs --host-pipe NAME and --proxy-pipe NAME."};
    parsed.backup = ParseBackupArguments(backupWords);
    return parsed;
}

} // namespace client

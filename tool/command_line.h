// The tool's own options. The common library reads "-log" and "-verbose" from
// the same command line in a pass of its own; this table has to live with them.
#pragma once

#include <memory>
#include <string>

namespace wrap {

struct CToolCmdLineOptions {
    // The short name of the pipe, without the "\\.\pipe\" prefix.
    std::string pipeName;
    // Required on the command line but read by nothing.
    std::string logName;
};

// Throws unless the tool was started in pipe mode with a pipe name and a log name.
std::shared_ptr<CToolCmdLineOptions> ParseToolCmdLine(int argc, const char* const argv[]);

} // namespace wrap

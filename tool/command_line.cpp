#include "tool/command_line.h"

#include "common/exc/exc.h"

#include <boost/program_options.hpp>

namespace po = boost::program_options;

namespace wrap {

namespace {

po::options_description MakeOptionTable() {
    po::options_description table("Mandatory options", 80);
    // The first description is the one the backup server's tooling has always
    // carried; the table is never printed, so it stays.
    table.add_options()("pipemode,p", "help message")("pipename,n", po::value<std::string>(), "set pipename")(
        "logname,o", po::value<std::string>(), "set logname")("log,l", po::value<std::string>(), "set log");
    return table;
}

} // namespace

std::shared_ptr<CToolCmdLineOptions> ParseToolCmdLine(int argc, const char* const argv[]) {
    const po::options_description table = MakeOptionTable();
    po::variables_map values;
    // Default style, no positional options: a stray token (such as the path
    // behind the library's "-log") is dropped rather than refused.
    po::store(po::parse_command_line(argc, argv, table), values);
    po::notify(values);

    if (values.count("pipemode") == 0)
        throw exc::runtime_exc_t("Tool was not started in pipe mode.");

    auto options = std::make_shared<CToolCmdLineOptions>();
    options->pipeName = values["pipename"].as<std::string>();
    options->logName = values["logname"].as<std::string>();
    return options;
}

} // namespace wrap

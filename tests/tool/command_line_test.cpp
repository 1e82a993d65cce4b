#include "tool/command_line.h"

#include <boost/any.hpp>
#include <boost/program_options/errors.hpp>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::shared_ptr<wrap::CToolCmdLineOptions> Parse(std::vector<std::string> tokens) {
    tokens.insert(tokens.begin(), "mirrack");
    std::vector<const char*> argv;
    for (const auto& token : tokens)
        argv.push_back(token.c_str());
    return wrap::ParseToolCmdLine(static_cast<int>(argv.size()), argv.data());
}

} // namespace

TEST(ToolCommandLine, PipeAndLogNamesAreReadInAnyOrderAndFormAmongStrayTokens) {
    for (const auto& tokens : std::vector<std::vector<std::string>>{
             {"-p", "-n", "NAME", "-o", "LOG"},
             {"--logname", "LOG", "--pipename=NAME", "--pipemode"},
             // "-log X" is "-l og" to the table, and X is a stray token that is dropped.
             {"-log", "/tmp/x.log", "stray", "-p", "-n", "NAME", "other", "-o", "LOG"}}) {
        const auto options = Parse(tokens);
        EXPECT_EQ(options->pipeName, "NAME");
        EXPECT_EQ(options->logName, "LOG");
    }
}

TEST(ToolCommandLine, MissingOrMalformedOptionsFailInTheLibrary) {
    EXPECT_THROW(Parse({"-p", "-n", "NAME"}), boost::bad_any_cast);
    EXPECT_THROW(Parse({"-p", "-o", "LOG"}), boost::bad_any_cast);
    EXPECT_THROW(Parse({"-p", "-n", "NAME", "-o", "LOG", "-verbose"}),
                 boost::program_options::unknown_option);
    EXPECT_THROW(Parse({"-p", "-o", "LOG", "-n"}), boost::program_options::invalid_command_line_syntax);
    EXPECT_THROW(Parse({"-p", "-n", "A", "-n", "B", "-o", "LOG"}),
                 boost::program_options::multiple_occurrences);
}

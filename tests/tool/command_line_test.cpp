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

std::string FailureOf(const std::vector<std::string>& tokens) {
    try {
        Parse(tokens);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no failure";
}

} // namespace

TEST(ToolCommandLine, PipeModeYieldsPipeAndLogNameInAnyOrderAndForm) {
    auto options = Parse({"-p", "-n", "NAME", "-o", "LOG"});
    EXPECT_EQ(options->pipeName, "NAME");
    EXPECT_EQ(options->logName, "LOG");

    options = Parse({"--logname", "L2", "--pipename=P2", "--pipemode"});
    EXPECT_EQ(options->pipeName, "P2");
    EXPECT_EQ(options->logName, "L2");
}

TEST(ToolCommandLine, RefusesToRunOutsidePipeMode) {
    EXPECT_EQ(FailureOf({"-n", "NAME", "-o", "LOG"}), "Tool was not started in pipe mode.");
    EXPECT_EQ(FailureOf({}), "Tool was not started in pipe mode.");
}

TEST(ToolCommandLine, MissingPipeOrLogNameIsTheLibrarysFailedCast) {
    EXPECT_THROW(Parse({"-p", "-n", "NAME"}), boost::bad_any_cast);
    EXPECT_THROW(Parse({"-p", "-o", "LOG"}), boost::bad_any_cast);
}

TEST(ToolCommandLine, StrayTokensAndTheLibraryLogOptionAreTolerated) {
    // "-log X" is "-l og" to the table, and X is a stray token that is dropped.
    auto options = Parse({"-log", "/tmp/x.log", "stray", "-p", "-n", "NAME", "other", "-o", "LOG"});
    EXPECT_EQ(options->pipeName, "NAME");
    EXPECT_EQ(options->logName, "LOG");
}

TEST(ToolCommandLine, MalformedOptionsFailInTheLibrary) {
    EXPECT_THROW(Parse({"-p", "-n", "NAME", "-o", "LOG", "-verbose"}),
                 boost::program_options::unknown_option);
    EXPECT_THROW(Parse({"-p", "-o", "LOG", "-n"}), boost::program_options::invalid_command_line_syntax);
    EXPECT_THROW(Parse({"-p", "-n", "A", "-n", "B", "-o", "LOG"}),
                 boost::program_options::multiple_occurrences);
}

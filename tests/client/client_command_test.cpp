#include "client/subcommand.h"
#include "test_server.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

struct run_t {
    int status;
    std::string out;
    std::string err;
};

run_t run_client(const std::vector<std::string>& arguments) {
    std::ostringstream out, err;
    const int status = client::RunClient(arguments, out, err);
    return {status, out.str(), err.str()};
}

} // namespace

TEST(ClientCommand, CallPrintsArgumentsAndDecodedDocuments) {
    client_test::test_server_t server;
    const auto file = client_test::scratch_folder() / "document.xml";
    std::ofstream(file, std::ios::binary) << "<FilesList>\r\n<File/>\r\n</FilesList>";

    const run_t run = run_client({"--pipe", to_ansi_nothrow(server.name()), "call", "Echo", "Text=@@at",
                                  "Document=@" + file.string()});
    EXPECT_EQ(run.status, client::exit_success) << run.err;
    EXPECT_EQ(run.out,
              "OK\nText: @at\nFilesList (decoded):\n    <FilesList>\n    <File/>\n    </FilesList>\n");
}

TEST(ClientCommand, AnErrorResponseIsPrintedLineByLineWithItsOwnStatus) {
    client_test::test_server_t server;
    const run_t run = run_client({"--pipe=" + to_ansi_nothrow(server.name()), "call", "Fail"});
    EXPECT_EQ(run.status, client::exit_error_response);
    EXPECT_EQ(run.out, "ERROR\n    The cause.\n    --tr:The step.\n");

    client_test::test_server_t raw_server;
    const run_t raw = run_client({"--raw", "--pipe", to_ansi_nothrow(raw_server.name()), "call", "Nothing"});
    EXPECT_EQ(raw.status, client::exit_success);
    EXPECT_EQ(raw.out.rfind("xml:<OutputArguments", 0), 0u);
}

TEST(ClientCommand, MistakesOnTheCommandLineAndAbsentServersHaveTheirStatus) {
    for (const std::vector<std::string>& line :
         std::vector<std::vector<std::string>>{{"call", "Nothing"},
                                               {"--pipe", "x", "fly"},
                                               {"--pipe", "x", "call"},
                                               {"--pipe", "x", "call", "Nothing", "novalue"},
                                               {"--pipe", "x", "call", "Nothing", "Doc=@/no/such/file"},
                                               {"--pipe", "x", "call", "--verbose"},
                                               {"--pipe", "x", "call", "Nothing", "-x=1"},
                                               {"--bogus"}}) {
        const run_t run = run_client(line);
        EXPECT_EQ(run.status, client::exit_usage) << run.err;
        EXPECT_NE(run.err.find("Usage:"), std::string::npos);
    }
    EXPECT_EQ(run_client({"--help"}).status, client::exit_success);
    // Every subcommand shows its use, and does nothing else, whatever stands beside --help.
    const std::string target = (std::filesystem::temp_directory_path() / "mirrack-help-made-this").string();
    for (const client::subcommand_t& subcommand : client::Subcommands()) {
        const run_t help = run_client({"--pipe", "nobody-here", subcommand.name, "--spec", "s.xml", "--to",
                                       target, "--help", "Name=v"});
        EXPECT_EQ(help.status, client::exit_success) << subcommand.name << help.err;
        EXPECT_NE(help.out.find(subcommand.usage), std::string::npos) << help.out;
    }
    EXPECT_FALSE(std::filesystem::exists(target));
    client_test::scratch_folder();
    EXPECT_EQ(run_client({"--pipe", "nobody-here", "--timeout", "30", "call", "Nothing"}).status,
              client::exit_failure);
}

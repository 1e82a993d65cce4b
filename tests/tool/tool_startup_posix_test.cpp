// POSIX only: the tool is started with fork and exec; the Windows smoke test covers the same starts.
// How the tool starts and ends, seen from outside: exit status, log, pipe.
#include "tool_expectations.h"
#include "tool_job_posix.h"

#include "common/win/native_name_posix.h"
#include "tests/support/host_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using test_support::contains;

bool PipeFolderIsEmpty(const ToolRun& run) {
    return std::filesystem::is_empty(run.PipeFolder());
}

} // namespace

TEST(ToolStartup, RefusedStartsSayWhyInTheLogCreateNoPipeAndExitZero) {
    const std::pair<std::vector<std::string>, std::string> refusals[] = {
        {{}, tool_expect::notPipeMode},
        {{"-n", "X", "-o", "L"}, tool_expect::notPipeMode},
        // "-verbose" is the library's option, but "-v" to the table.
        {{"-p", "-n", "X", "-o", "L", "-verbose"}, "-verbose"},
        // The log name is read although nothing needs it.
        {{"-p", "-n", "X"}, "any_cast"},
    };
    for (const auto& [arguments, logged] : refusals) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        ToolRun run(arguments);
        EXPECT_EQ(run.WaitForExit(), 0);
        const std::string log = run.LogText();
        EXPECT_TRUE(contains(log, logged)) << log;
        EXPECT_TRUE(PipeFolderIsEmpty(run));
        EXPECT_FALSE(contains(log, tool_expect::normalEnd)) << log;
    }
    // Where no log can be opened, standard error is what tells.
    ToolRun unlogged({"-log", "/dev/null/none/tool.log"});
    EXPECT_EQ(unlogged.WaitForExit(), 0);
    EXPECT_TRUE(contains(unlogged.OutputText(), "Tool was not started in pipe mode."))
        << unlogged.OutputText();
}

// A backup server that passes a name which is not UTF-8 finds the socket under the same bytes;
// the texts show the name with U+FFFD in place of what is not UTF-8.
TEST(ToolStartup, PipeNameThatIsNotUtf8NamesTheSocketWithItsBytes) {
    const std::string name = "bad\xff";
    ToolRun run({"-p", "-n", name, "-o", "L"});
    ::setenv("MIRRACK_PIPE_DIR", run.PipeFolder().c_str(), 1);
    auto client = client::CInvokeClient::Connect(win::wide_from_name_bytes(name));
    EXPECT_TRUE(std::filesystem::exists(run.PipeFolder() / name));
    EXPECT_TRUE(client->Call(L"CloseSnapshot", client::CRequestArguments()).IsSuccess());
    client->Disconnect();
    EXPECT_EQ(run.WaitForExit(), 0);
    const std::string log = run.LogText();
    EXPECT_TRUE(contains(log, "Start pipe invoker server. PipeName: 'bad\xef\xbf\xbd'.")) << log;
    EXPECT_TRUE(contains(log, "Process will be finished normally.")) << log;
}

TEST(ToolStartup, ClientThatLeavesAtOnceEndsTheRunNormally) {
    ToolJob job;
    const std::string log = job.End();
    EXPECT_FALSE(contains(log, "ERR |")) << log;
}

TEST(ToolStartup, SecondToolOnAPipeInUseFailsAndTheFirstGoesOnServing) {
    ToolJob first;
    ToolRun second(ToolRun::PipeMode(), first.run.PipeFolder());
    EXPECT_EQ(second.WaitForExit(), 0);
    EXPECT_TRUE(contains(second.LogText(), tool_expect::PipeInUse(ToolRun::pipeName))) << second.LogText();
    EXPECT_FALSE(contains(second.LogText(), tool_expect::normalEnd));
    first.Close();
}

// A host that cannot be read fails every simulated call and says so once, naming the file; the
// tool's own native log needs no host and is written all the same.
TEST(ToolStartup, AHostThatCannotBeReadSaysSoOnceAndTakesNotTheNativeLogAway) {
    test_support::host_folder_t host("mirrack-unreadable");
    std::filesystem::create_directories(host.dir() / "host.xml");
    ToolJob job(host.dir());
    const std::string log = job.End();
    EXPECT_TRUE(contains(log, "Start pipe invoker server.")) << log;
    const std::string said = job.run.OutputText();
    const std::string complaint =
        "Simulated host is unusable: " + (host.dir() / "host.xml").string() + ": the host cannot be read: ";
    EXPECT_TRUE(contains(said, complaint + "Is a directory\n")) << said;
    EXPECT_EQ(said.find(complaint), said.rfind(complaint)) << said;
}

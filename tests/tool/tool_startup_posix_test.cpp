// POSIX only: the tool is started with fork and exec; the Windows smoke test covers the same starts.
// How the tool starts and ends, seen from outside: exit status, log, pipe.
#include "tool_expectations.h"
#include "tool_job_posix.h"

#include "common/win/native_name_posix.h"

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

// Standard output and error that nobody reads are no reason to stop: the pipe is served.
TEST(ToolStartup, OutputsThatNobodyReadsLeaveThePipeServed) {
    ToolRun run(ToolRun::PipeMode(), {}, {}, ToolRun::output_t::closed_pipe);
    ::setenv("MIRRACK_PIPE_DIR", run.PipeFolder().c_str(), 1);
    auto client = client::CInvokeClient::Connect(ToolRun::PipeName());
    EXPECT_TRUE(client->Call(L"CloseSnapshot", client::CRequestArguments()).IsSuccess());
    client->Disconnect();
    EXPECT_EQ(run.WaitForExit(), 0);
    EXPECT_TRUE(contains(run.LogText(), tool_expect::normalEnd)) << run.LogText();
}

// A native log path names its folder by bytes, as the pipe name does: no folder with U+FFFD in
// place of what is not UTF-8.
TEST(ToolStartup, LogPathThatIsNotUtf8NamesItsFolderWithItsBytes) {
    std::string base = (std::filesystem::temp_directory_path() / "mirrack-log-XXXXXX").string();
    ASSERT_NE(::mkdtemp(base.data()), nullptr);
    const std::filesystem::path folder = std::filesystem::path(base) / "bad\xff";
    ToolRun run({"-log", (folder / "tool.log").string()});
    EXPECT_EQ(run.WaitForExit(), 0);
    EXPECT_TRUE(contains(read_file(folder / "tool.log"), tool_expect::notPipeMode));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(base) / "bad\xef\xbf\xbd"));
    std::filesystem::remove_all(base);
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

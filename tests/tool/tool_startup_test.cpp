// How the tool starts and ends, seen from outside: exit status, log, pipe. On POSIX also names
// made of bytes (a pipe's socket, a native log path), a broken pipe on standard output and the
// simulated host, which exist only there.
#include "tool_expectations.h"
#include "tool_job.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#ifndef _WIN32
#include "common/win/native_name_posix.h"
#include "tests/support/host_folder.h"
#endif

using test_support::contains;

TEST(ToolStartup, RefusedStartsSayWhyInTheLogCreateNoPipeAndExitZero) {
    const std::pair<std::vector<std::string>, std::string> refusals[] = {
        {{}, tool_expect::notPipeMode},
        {{"-n", "X", "-o", "L"}, tool_expect::notPipeMode},
        // "-verbose" is the library's option, but "-v" to the table.
        {{"-p", "-n", "X", "-o", "L", "-verbose"}, "-verbose"},
        // The log name is read although nothing needs it.
        {{"-p", "-n", "X"}, "any_cast"},
        {{"-p", "-o", "L"}, "any_cast"},
        {{"-p", "-n", "A", "-n", "B", "-o", "L"}, "more than once"},
    };
    for (const auto& [arguments, logged] : refusals) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        ToolRun run(arguments);
        EXPECT_EQ(run.WaitForExit(), 0);
        const std::string log = run.LogText();
        EXPECT_TRUE(contains(log, logged)) << log;
        EXPECT_FALSE(contains(log, "Start pipe invoker server.")) << log;
        EXPECT_FALSE(contains(log, tool_expect::normalEnd)) << log;
    }
    // Where no log can be opened, standard error is what tells: its folder would be under a file.
    ToolRun logged({});
    EXPECT_EQ(logged.WaitForExit(), 0);
    ToolRun unlogged({"-log", (logged.LogPath() / "tool.log").string()});
    EXPECT_EQ(unlogged.WaitForExit(), 0);
    EXPECT_TRUE(contains(unlogged.OutputText(), "Tool was not started in pipe mode."))
        << unlogged.OutputText();
}

// Whether the client leaves before the tool waits for it or while it waits, its visit ends the run.
// The options come in either form, and tokens that are none are passed over.
TEST(ToolStartup, ClientThatLeavesAtOnceEndsTheRunNormally) {
    const std::string pipe = ToolRun::PipeNameText();
    const std::pair<std::vector<std::string>, int> starts[] = {
        {{"stray", "-p", "-n", pipe, "other", "-o", "LOG"}, 0},
        {{"--logname", "LOG", "--pipename=" + pipe, "--pipemode"}, 1000}};
    for (const auto& [tokens, delayMs] : starts) {
        SCOPED_TRACE(testing::PrintToString(tokens));
        ToolRun run(tokens);
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        run.DirectClients();
        client::CInvokeClient::Connect(ToolRun::PipeName())->Disconnect();
        EXPECT_EQ(run.WaitForExit(), 0);
        const std::string log = run.LogText();
        EXPECT_TRUE(contains(log, tool_expect::normalEnd)) << log;
        EXPECT_FALSE(contains(log, "ERR |")) << log;
    }
}

TEST(ToolStartup, SecondToolOnAPipeInUseFailsAndTheFirstGoesOnServing) {
    ToolJob first;
    ToolRun second(ToolRun::PipeMode(), first.run.PipeFolder());
    EXPECT_EQ(second.WaitForExit(), 0);
    EXPECT_TRUE(contains(second.LogText(), "Failed to create instance of invoke server. Pipe name: '" +
                                               ToolRun::PipeNameText() + "'."))
        << second.LogText();
    EXPECT_FALSE(contains(second.LogText(), tool_expect::normalEnd));
    first.Close();
}

#ifndef _WIN32
// A backup server that passes names which are not UTF-8 finds the socket and the log's folder under
// the same bytes; the texts show the names with U+FFFD in place of what is not UTF-8. Standard
// output and error that nobody reads are no reason to stop: the pipe is served.
TEST(ToolStartup,
     NamesThatAreNotUtf8NameTheSocketAndTheLogFolderWithTheirBytesAndUnreadOutputsLeaveItServed) {
    const std::string name = "bad\xff";
    const test_support::host_folder_t base("mirrack-log");
    const std::filesystem::path log = base.dir() / name / "tool.log";
    ToolRun run({"-p", "-n", name, "-o", "L", "-log", log.string()}, {}, {}, ToolRun::output_t::closed_pipe);
    run.DirectClients();
    auto client = client::CInvokeClient::Connect(win::wide_from_name_bytes(name));
    EXPECT_TRUE(std::filesystem::exists(run.PipeFolder() / name));
    EXPECT_TRUE(client->Call(L"CloseSnapshot", client::CRequestArguments()).IsSuccess());
    client->Disconnect();
    EXPECT_EQ(run.WaitForExit(), 0);
    const std::string text = read_file(log);
    EXPECT_TRUE(contains(text, "Start pipe invoker server. PipeName: 'bad\xef\xbf\xbd'.")) << text;
    EXPECT_TRUE(contains(text, tool_expect::normalEnd)) << text;
    EXPECT_FALSE(std::filesystem::exists(base.dir() / "bad\xef\xbf\xbd"));
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
#endif

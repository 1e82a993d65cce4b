// How the tool starts and ends, seen from outside: exit status, log, pipe.
#include "tool_expectations.h"
#include "tool_job.h"

#include "tests/support/process_env.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace {

using test_support::contains;

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
        EXPECT_FALSE(contains(log, "Start pipe invoker server.")) << log;
        EXPECT_FALSE(contains(log, tool_expect::normalEnd)) << log;
    }
    // Where no log can be opened, standard error is what tells: its folder would be under a file.
    const auto file = std::filesystem::temp_directory_path() /
                      ("mirrack-not-a-folder-" + std::to_string(test_env::process_id()));
    std::ofstream(file) << "a file";
    ToolRun unlogged({"-log", (file / "tool.log").string()});
    EXPECT_EQ(unlogged.WaitForExit(), 0);
    EXPECT_TRUE(contains(unlogged.OutputText(), "Tool was not started in pipe mode."))
        << unlogged.OutputText();
    std::filesystem::remove(file);
}

// Whether the client leaves before the tool waits for it or while it waits, its visit ends the run.
TEST(ToolStartup, ClientThatLeavesAtOnceEndsTheRunNormally) {
    for (const auto delay : {std::chrono::milliseconds(0), std::chrono::milliseconds(1000)}) {
        ToolRun run(ToolRun::PipeMode());
        std::this_thread::sleep_for(delay);
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
    EXPECT_TRUE(contains(second.LogText(), tool_expect::PipeInUse(ToolRun::PipeNameText())))
        << second.LogText();
    EXPECT_FALSE(contains(second.LogText(), tool_expect::normalEnd));
    first.Close();
}

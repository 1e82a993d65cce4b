// A snapshot worker that a fatal signal ends while it holds the snapshot: the tool still
// answers, closes and exits, and the shadow copies go with the process.
#include "tool_run_posix.h"

#include "client/invoke_client.h"
#include "common/format/format.h"
#include "lab/host_state_report.h"
#include "tests/snapshot/hyperv_test_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

using namespace snapshot_test;
using client::CRequestArguments;
using client::CResponse;

namespace {

// The number that follows marker in text, or 0.
long NumberAfter(const std::string& text, const std::string& marker) {
    const std::size_t at = text.find(marker);
    return at == std::string::npos ? 0 : std::strtol(text.c_str() + at + marker.size(), nullptr, 10);
}

// The kernel's id of the worker with this role, read from its "Thread started" line.
long WorkerThreadId(const std::string& log, const std::string& role) {
    const std::size_t line = log.find("role: " + role);
    const std::size_t start = line == std::string::npos ? line : log.rfind("Thread started.", line);
    return start == std::string::npos ? 0 : NumberAfter(log.substr(start), "Thread id: ");
}

// The first log line is the main thread's, whose id is the process id.
long ToolProcessId(const std::string& log) {
    return NumberAfter(log, "<");
}

} // namespace

TEST(CrashedWorker, ASignalDuringTheHoldLeavesTheToolServingAndNoShadowCopyBehind) {
    hyperv_host_t host;
    // What the abandoned worker held is never freed, by design: a leak check of the tool's
    // exit would report it.
    const char* sanitizerOptions = std::getenv("ASAN_OPTIONS");
    const std::string withoutLeakCheck =
        (sanitizerOptions != nullptr ? std::string(sanitizerOptions) + ":" : std::string()) +
        "detect_leaks=0";
    ::setenv("ASAN_OPTIONS", withoutLeakCheck.c_str(), 1);
    ToolRun run(ToolRun::PipeMode(), {}, host.dir());
    ::setenv("MIRRACK_PIPE_DIR", run.PipeFolder().c_str(), 1);
    auto connection = client::CInvokeClient::Connect(ToolRun::PipeName());
    const CResponse begin = connection->Call(
        L"BeginSnapshotCreation",
        CRequestArguments()
            .AddText(L"JobName", L"Nightly")
            .AddText(L"BackupConsole", L"Console")
            .AddEncoded(L"SnapshotXmlSpec", to_unicode(spec_xml({{local_vm}}, usual_providers))));
    ASSERT_TRUE(begin.IsSuccess()) << to_ansi(begin.Frame());
    for (;;) {
        const CResponse status = connection->Call(L"GetAsyncOpStatus", CRequestArguments());
        ASSERT_TRUE(status.IsSuccess()) << to_ansi(status.Frame());
        if (status.Value(L"IsCompleted") == L"true") {
            ASSERT_EQ(status.Value(L"IsSucceeded"), L"true") << to_ansi(status.Value(L"ErrDescription"));
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ASSERT_FALSE(host.state_lines("shadows.txt").empty());

    const std::string log = run.LogText();
    const long worker = WorkerThreadId(log, "VssSnapshotThread");
    const long process = ToolProcessId(log);
    ASSERT_NE(worker, 0) << log;
    ASSERT_NE(process, 0) << log;
    ASSERT_EQ(::syscall(SYS_tgkill, process, worker, SIGSEGV), 0);
    for (int i = 0;
         i < 500 && run.LogText().find("Thread finished. Role: 'VssSnapshotThread'") == std::string::npos;
         ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));

    EXPECT_TRUE(connection->Call(L"GetAsyncOpStatus", CRequestArguments()).IsSuccess());
    const CResponse close = connection->Call(L"CloseSnapshot", CRequestArguments());
    EXPECT_TRUE(close.IsSuccess()) << to_ansi(close.Frame());
    connection->Disconnect();
    EXPECT_EQ(run.WaitForExit(), 0);
    const std::string finalLog = run.LogText();
    EXPECT_NE(finalLog.find("Thread finished. Role: 'VssSnapshotThread'"), std::string::npos) << finalLog;
    EXPECT_NE(finalLog.find("Process will be finished normally."), std::string::npos) << finalLog;

    // The abandoned worker never released its snapshot: the shadow copies end with the
    // process, as auto-release shadow copies do, and the host's next caller sweeps them.
    const std::string state = lab::host_state_report(host.dir());
    EXPECT_NE(state.find("Live shadow copies: 0\n"), std::string::npos) << state;
    EXPECT_TRUE(host.is_clean());
}

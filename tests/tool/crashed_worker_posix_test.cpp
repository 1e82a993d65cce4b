// A snapshot worker that a fatal signal ends while it holds the snapshot: the tool still
// answers, closes and exits, and the shadow copies go with the process.
#include "tool_job_posix.h"

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

namespace {

// The kernel's id of the worker with this role, read from its "Thread started" line, or 0.
long WorkerThreadId(const std::string& log, const std::string& role) {
    const std::string marker = "Thread id: ";
    const std::size_t line = log.find("role: " + role);
    const std::size_t start = line == std::string::npos ? line : log.rfind("Thread started.", line);
    const std::size_t id = start == std::string::npos ? start : log.find(marker, start);
    return id == std::string::npos ? 0 : std::strtol(log.c_str() + id + marker.size(), nullptr, 10);
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
    ToolJob job(host.dir());
    ASSERT_TRUE(job.Begin(spec_xml({{local_vm}}, usual_providers)).IsSuccess());
    ASSERT_TRUE(job.Succeeds());
    ASSERT_FALSE(host.state_lines("shadows.txt").empty());

    const std::string log = job.run.LogText();
    const long worker = WorkerThreadId(log, "VssSnapshotThread");
    ASSERT_NE(worker, 0) << log;
    ASSERT_EQ(::syscall(SYS_tgkill, job.run.Pid(), worker, SIGSEGV), 0);
    for (int i = 0;
         i < 500 && job.run.LogText().find("Thread finished. Role: 'VssSnapshotThread'") == std::string::npos;
         ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));

    EXPECT_TRUE(job.Call(L"GetAsyncOpStatus").IsSuccess());
    const std::string finalLog = job.Close();
    EXPECT_NE(finalLog.find("Thread finished. Role: 'VssSnapshotThread'"), std::string::npos) << finalLog;

    // The abandoned worker never released its snapshot: the shadow copies end with the
    // process, as auto-release shadow copies do, and the host's next caller sweeps them.
    const std::string state = lab::host_state_report(host.dir());
    EXPECT_NE(state.find("Live shadow copies: 0\n"), std::string::npos) << state;
    EXPECT_TRUE(host.is_clean());
}

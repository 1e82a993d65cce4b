// POSIX only: the refusal to delete is a fault of the simulated host, and workers crash at once by a
// signal, which Windows' runtime takes for an abort of the process.
// Dumps that the system refuses to delete, and dumps that workers crashing at once write side by side.
#include "common/crash/crash_filter.h"
#include "common/runtime/win_thread.h"
#include "crash_test_support.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <thread>
#include <vector>

namespace {

class undeletable_dumps_test : public crash_test::dump_folder_test {
protected:
    win_test::selected_host_t host_{R"(<Host name="T"><Fault op="DeleteFileW" err="5"/></Host>)"};
};

// Workers held at a start line, to crash at the same moment when it opens.
std::atomic<int> g_at_start{0};
std::atomic<bool> g_start{false};

// The signal is raised rather than caused: a race detector takes stores through one null pointer
// from several threads for a race.
DWORD crash_with_the_others(void*) {
    ++g_at_start;
    while (!g_start.load())
        std::this_thread::yield();
    ::raise(SIGSEGV);
    return 0;
}

using crashing_at_once_test = crash_test::crash_frame_test;

} // namespace

TEST_F(undeletable_dumps_test, TwentyDumpsThatCannotGoMeanNoNewDump) {
    for (int id = 0; id < 19; ++id)
        add_old_dump("RZ_crash_" + std::to_string(id) + ".txt", 30 - id);
    // Nineteen leave room for one more without a deletion.
    crash::crash_filter(nullptr, crash::previous_filter_t::skip);
    EXPECT_EQ(dump_names().size(), 20u);
    EXPECT_TRUE(std::filesystem::exists(dumps_ / "RZ_crash_19.txt"));
    EXPECT_FALSE(log_has("Old dump cannot be removed."));
    EXPECT_FALSE(log_has("Cannot generate crash dump."));

    EXPECT_EQ(crash::crash_filter(nullptr, crash::previous_filter_t::skip), crash::execute_handler);
    EXPECT_EQ(dump_names().size(), 20u);
    EXPECT_EQ(log_count("Old dump cannot be removed. Dump path: ["), 20u);
    EXPECT_TRUE(log_has("Access is denied."));
    EXPECT_TRUE(
        log_has("Cannot cleanup out of date dumps. There are [20] dumps stored. Maximum allowed dumps "
                "number: [20]."));
    EXPECT_TRUE(log_has("Cannot generate crash dump."));
    EXPECT_EQ(log_count("Crash handlers were successfully executed."), 2u);
}

// Workers that crash at once each pick a name from the same listing of the folder: each must
// still keep a dump of its own.
TEST_F(crashing_at_once_test, WorkersThatCrashAtOnceKeepADumpEach) {
    constexpr std::size_t workers = 16;
    for (int round = 0; round < 20; ++round) {
        g_at_start = 0;
        g_start = false;
        std::vector<std::unique_ptr<win::win_thread_t>> crashers;
        for (std::size_t i = 0; i < workers; ++i)
            crashers.push_back(
                std::make_unique<win::win_thread_t>(&crash_with_the_others, nullptr, "Crasher"));
        while (g_at_start.load() < static_cast<int>(workers))
            std::this_thread::yield();
        g_start = true;
        for (auto& crasher : crashers)
            crasher->stop_wait();
        const std::vector<std::string> names = dump_names();
        ASSERT_EQ(names.size(), workers) << "round " << round;
        for (const std::string& name : names) {
            EXPECT_EQ(dump_text(name).rfind("Signal: 11 (SIGSEGV)", 0), 0u) << name;
            std::filesystem::remove(dumps_ / name);
        }
    }
}

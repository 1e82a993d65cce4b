// A worker that crashes: a dump in the dump folder, the crash handlers, the crash code for the
// waiter, and a process that goes on. POSIX comes to the filter by a signal and writes a text
// dump; Windows by a structured exception and writes a minidump.
#include "common/crash/crash_filter.h"
#include "common/monitoring/thread_states.h"
#include "common/runtime/win_thread.h"
#include "crash_test_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

#ifdef _WIN32
const std::string first_dump = "RZ_crash_0.mdmp";
const std::string second_dump = "RZ_crash_1.mdmp";
// ExitThread leaves the routine's frames as they are.
constexpr bool ending_unwinds = false;
#else
const std::string first_dump = "RZ_crash_0.txt";
const std::string second_dump = "RZ_crash_1.txt";
constexpr bool ending_unwinds = true;
#endif

int* volatile null_pointer = nullptr;

// The store is the point of the test; a sanitizer build need not report it first.
__attribute__((no_sanitize("undefined"))) DWORD dereference_null(void*) {
    *null_pointer = 1;
    return 0;
}

DWORD throw_out_of_routine(void*) {
    throw std::runtime_error("nobody caught this");
}

DWORD return_seven(void*) {
    return 7;
}

struct unwind_probe_t {
    std::atomic<bool>* unwound;
    ~unwind_probe_t() { unwound->store(true); }
};

std::atomic<bool> g_unwound{false};

DWORD end_itself(void*) {
    unwind_probe_t probe{&g_unwound};
    win::exit_current_thread(5);
}

class crashing_worker_test : public crash_test::crash_frame_test {
protected:
    // Runs the routine on a worker to its end; the worker's exit code. Its monitor entry goes with
    // it unless the routine was left without unwinding.
    DWORD run_worker(win::thread_routine_t routine, bool unwound = true) {
        win::win_thread_t worker(routine, nullptr, "Crasher");
        worker.stop_wait();
        worker_id_ = worker.thread_id();
        const auto monitor = monitoring::CThreadStatesCollection::get();
        EXPECT_EQ(monitor->find(worker_id_) == nullptr, unwound);
        monitor->remove(worker_id_);
        return worker.exit_code().value_or(0);
    }

    DWORD worker_id_ = 0;
};

} // namespace

TEST_F(crashing_worker_test, CrashesWriteADumpAndEndOnlyTheirThread) {
    EXPECT_EQ(run_worker(&dereference_null), 0xFFFFFFFFu);
    ASSERT_EQ(dump_names(), std::vector<std::string>{first_dump});
    const std::string dump = dump_text(first_dump);
#ifdef _WIN32
    EXPECT_EQ(dump.substr(0, 4), "MDMP");
    EXPECT_TRUE(log_has("Writing dump. Dump path: "));
#else
    EXPECT_NE(dump.find("Signal: 11 (SIGSEGV)"), std::string::npos) << dump;
    EXPECT_NE(dump.find("Thread id: " + std::to_string(worker_id_) + ", role: Crasher"), std::string::npos)
        << dump;
    EXPECT_NE(dump.find("Backtrace:\n"), std::string::npos);
    EXPECT_GT(std::count(dump.begin(), dump.end(), '\n'), 3) << "no frames in the backtrace";
#endif
    EXPECT_TRUE(log_has("Crash handlers were successfully executed."));
#ifndef _WIN32
    // Windows ends the crashed worker inside the filter, before its routine's own last line.
    EXPECT_EQ(log_count("Thread finished. Role: 'Crasher'."), 1u);
#endif

    // The process goes on: an exception that escapes its routine is a crash of the thread too,
    // and a sound worker runs.
    EXPECT_EQ(run_worker(&throw_out_of_routine), 0xFFFFFFFFu);
    ASSERT_EQ(dump_names(), (std::vector<std::string>{first_dump, second_dump}));
#ifndef _WIN32
    EXPECT_NE(dump_text(second_dump).find("Unhandled exception: nobody caught this"), std::string::npos);
#endif
    EXPECT_EQ(run_worker(&return_seven), 7u);
}

TEST_F(crashing_worker_test, ThreadEndingItselfIsNoCrashAndUnwindsWhereThePlatformDoes) {
    EXPECT_EQ(run_worker(&end_itself, ending_unwinds), 5u);
    EXPECT_EQ(g_unwound.load(), ending_unwinds);
    EXPECT_TRUE(dump_names().empty());
}

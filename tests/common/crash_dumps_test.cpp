// Crash dumps: their names, the pruning of old ones, the failures that leave no dump, and the crash
// handlers that run in any case. A worker that crashes: a dump in the dump folder, the crash handlers,
// the crash code for the waiter, and a process that goes on. POSIX comes to the filter by a signal and
// writes a text dump; Windows by a structured exception and writes a minidump.
#include "common/crash/crash_filter.h"
#include "common/crash/dump_naming.h"
#include "common/crash/dump_type.h"
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/monitoring/thread_states.h"
#include "common/runtime/win_thread.h"
#include "log_test_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using crash_test::dump_folder_test;

// The name the next dump takes; names that hold `taken` were made by another crash meanwhile.
std::string next_name(const std::filesystem::path& folder, const std::wstring& taken = std::wstring()) {
    const std::wstring path =
        crash::create_next_dump(folder.string(), "RZ", "txt", [&](const std::wstring& name) {
            return taken.empty() || name.find(taken) == name.npos;
        });
    return std::filesystem::path(to_utf8(path.substr(path.find_last_of(L"\\/") + 1))).string();
}

// Counts its runs, and those that found a dump already written in the dump folder.
class counting_handler_t : public crash::deinit_handler_t {
public:
    counting_handler_t(std::pair<std::atomic<int>, std::atomic<int>>& runs, bool fails)
        : runs_(runs), fails_(fails) {}
    void execute() override {
        ++runs_.first;
        std::error_code ec;
        if (!std::filesystem::is_empty(crash::crash_context().dump_folder, ec) && !ec)
            ++runs_.second;
        if (fails_)
            throw std::runtime_error("handler broke");
    }

private:
    std::pair<std::atomic<int>, std::atomic<int>>& runs_;
    bool fails_;
};

// The crash filter with a handler sequence of the test's own in place of the process's: one handler
// per entry, which throws where the entry is true. How many handlers ran, and how many of them found
// the dump written.
std::pair<int, int> filter_with_handlers(std::initializer_list<bool> failing,
                                         crash::previous_filter_t answer = crash::previous_filter_t::skip) {
    const auto saved = crash::crash_context().deinit_seq;
    crash::crash_context().deinit_seq = std::make_shared<crash::deinit_seq_t>();
    std::pair<std::atomic<int>, std::atomic<int>> runs{0, 0};
    for (const bool fails : failing)
        crash::crash_context().deinit_seq->add(std::make_shared<counting_handler_t>(runs, fails));
    EXPECT_EQ(crash::crash_filter(nullptr, answer), crash::execute_handler);
    crash::crash_context().deinit_seq = saved;
    return {runs.first.load(), runs.second.load()};
}

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

TEST_F(dump_folder_test, FirstDumpIsNumberZeroAndNumbersFillTheLowestGap) {
    EXPECT_EQ(next_name(dumps_), "RZ_crash_0.txt");
    add_old_dump("RZ_crash_0.txt", 3);
    add_old_dump("rz_CRASH_1.TXT", 2); // names compare without regard to case
    add_old_dump("RZ_crash_3.txt", 1);
    add_old_dump("RZ_crash_2.mdmp", 1); // another kind of dump takes no number of this one
    EXPECT_EQ(next_name(dumps_), "RZ_crash_2.txt");
    // A name that another crash took since the folder was listed passes on to the next number.
    EXPECT_EQ(next_name(dumps_, L"_crash_2."), "RZ_crash_4.txt");
}

TEST_F(dump_folder_test, TwentyDumpsLoseTheOldestWhoseNumberIsTakenAgainAndMoreArePrunedToNineteen) {
    for (int id = 0; id < 20; ++id)
        add_old_dump("RZ_crash_" + std::to_string(id) + ".txt", id == 7 ? 100 : 50 - id);
    EXPECT_EQ(next_name(dumps_), "RZ_crash_7.txt");
    EXPECT_EQ(dump_names().size(), 19u);
    EXPECT_TRUE(log_has("RZ_crash_7.txt] deleted."));
    EXPECT_EQ(log_count("deleted."), 1u);
    // The four oldest of twenty-three go.
    for (int id = 20; id < 24; ++id)
        add_old_dump("RZ_crash_" + std::to_string(id) + ".txt", 200 - id);
    EXPECT_EQ(next_name(dumps_), "RZ_crash_7.txt");
    EXPECT_EQ(dump_names().size(), 19u);
    EXPECT_FALSE(std::filesystem::exists(dumps_ / "RZ_crash_23.txt"));
    EXPECT_TRUE(std::filesystem::exists(dumps_ / "RZ_crash_0.txt"));
}

TEST_F(dump_folder_test, DefaultEmptyFolderLogsTheFailureAndStillRunsTheHandlers) {
    crash::crash_context().dump_folder.clear();
    EXPECT_EQ(filter_with_handlers({false}).first, 1);
    EXPECT_TRUE(log_has("Invalid folder path: []."));
    EXPECT_TRUE(log_has("Cannot create folder. Folder path: []."));
    EXPECT_TRUE(log_has("Cannot define the name of the next crash dump. Dumps folder: []."));
    EXPECT_TRUE(log_has("Cannot generate crash dump."));
}

TEST_F(dump_folder_test, FilterWritesADumpThenRunsTheHandlersUntilOneFailsAndADisabledContextDoesNeither) {
    EXPECT_EQ(filter_with_handlers({false, false}), std::make_pair(2, 2))
        << "the handlers run once the dump is written";
    ASSERT_EQ(dump_names().size(), 1u);
    EXPECT_TRUE(log_has("Writing dump. Dump path: "));
    EXPECT_TRUE(log_has("Executing crash handlers."));
    EXPECT_TRUE(log_has("Crash handlers were successfully executed."));
    // A failing handler stops the rest, and the failure stays inside the filter.
    EXPECT_EQ(filter_with_handlers({true, false}).first, 1);
    EXPECT_TRUE(log_has("Crash handlers cannot be executed."));
    EXPECT_TRUE(log_has("handler broke"));
    EXPECT_EQ(log_count("Crash handlers were successfully executed."), 1u);
    crash::crash_context().disabled = 1;
    EXPECT_EQ(filter_with_handlers({false}, crash::previous_filter_t::ask).first, 0);
    crash::crash_context().disabled = 0;
    EXPECT_EQ(dump_names().size(), 2u) << "a disabled context writes no dump";
}

TEST(DumpType, KindAndSettingsChooseTheMinidumpType) {
    crash::library_settings_t settings;
    EXPECT_EQ(crash::dump_type(0, settings), 0u);
    EXPECT_EQ(crash::dump_type(2, settings), 0x21907u);
    settings.dump_type_text = "Full";
    EXPECT_EQ(crash::dump_type(0, settings), 2u);
    EXPECT_EQ(crash::dump_type(3, settings), 0u);
    settings.dump_type_text = "full"; // the comparison is exact
    EXPECT_EQ(crash::dump_type(0, settings), 0u);
    settings.dump_kind_override = 6;
    EXPECT_EQ(crash::dump_type(0, settings), 6u);
    EXPECT_EQ(crash::dump_type(2, settings), 0x21907u);
}

TEST_F(crashing_worker_test, CrashesWriteADumpAndEndOnlyTheirThread) {
    EXPECT_EQ(run_worker(&dereference_null), 0xFFFFFFFFu);
    ASSERT_EQ(dump_names(), std::vector<std::string>{first_dump});
    const std::string dump = dump_text(first_dump);
    EXPECT_TRUE(log_has("Crash handlers were successfully executed."));
#ifdef _WIN32
    EXPECT_EQ(dump.substr(0, 4), "MDMP");
    EXPECT_TRUE(log_has("Writing dump. Dump path: "));
#else
    const std::string head =
        "Signal: 11 (SIGSEGV), fault address: (nil)\nThread id: " + std::to_string(worker_id_) +
        ", role: Crasher\nBacktrace:\n";
    EXPECT_EQ(dump.substr(0, head.size()), head);
    EXPECT_GT(std::count(dump.begin(), dump.end(), '\n'), 3) << "no frames in the backtrace";
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

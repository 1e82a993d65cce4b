// POSIX only: workers are killed by signals sent to their kernel threads or crash at once by a
// signal, which Windows' runtime takes for an abort of the process; /proc tells when one sleeps; the
// refusal to delete is a fault of the simulated host. Workers abandoned by the crash frame while they
// wait or write: the locks they held do not take the rest of the process with them. Dumps that the
// system refuses to delete, and dumps that workers crashing at once write side by side.
#include "common/crash/crash_filter.h"
#include "common/logging/log_t.h"
#include "common/logging/zip_writer.h"
#include "common/monitoring/thread_states.h"
#include "common/runtime/win_thread.h"
#include "common/win/event.h"
#include "common/win/wait.h"
#include "log_test_support.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <sys/syscall.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

// Runs action on a thread of its own, so that a hang is reported instead of stalling the run. A
// hang ends the process: the action holds references to the test's stack, which a test that
// returned would leave to a thread still running.
void finish_in_time(const std::function<void()>& action, const char* hang) {
    auto task = std::make_shared<std::packaged_task<void()>>(action);
    auto done = task->get_future();
    std::thread([task] { (*task)(); }).detach();
    if (done.wait_for(std::chrono::seconds(20)) == std::future_status::ready)
        return;
    std::fprintf(stderr, "%s\n", hang);
    std::_Exit(EXIT_FAILURE);
}

// True once the thread sleeps in the kernel, as a worker waiting for its close event does.
bool asleep(long thread_id) {
    const std::string stat = log_test::read_file("/proc/self/task/" + std::to_string(thread_id) + "/stat");
    const auto end_of_name = stat.rfind(") ");
    return end_of_name != std::string::npos && stat.compare(end_of_name + 2, 1, "S") == 0;
}

struct holder_t {
    win::win_manual_reset_event_t close_event;
    std::atomic<long> thread_id{0};
};

DWORD hold_until_closed(void* argument) {
    auto* holder = static_cast<holder_t*>(argument);
    log_indent_in(logging::lib_logger());
    holder->thread_id.store(::syscall(SYS_gettid));
    return win::wait_for_object(holder->close_event.handle(), win::wait_infinite);
}

// A log file that crashes the thread writing a marked message, or the thread that rotates it
// once part of the log has gone into the archive.
class crashing_receiver_t : public logging::receiver::log_file_t {
public:
    enum class crash_t { on_marked_write, in_rotation };
    explicit crashing_receiver_t(std::shared_ptr<log_file_t> file, crash_t crash = crash_t::on_marked_write)
        : file_(std::move(file)), crash_(crash) {}
    void write(const std::string& text) override {
        if (crash_ == crash_t::on_marked_write && text.find("crash here") != std::string::npos)
            ::raise(SIGSEGV);
        file_->write(text);
    }
    std::string path() const override { return file_->path(); }
    std::string eol() const override { return file_->eol(); }
    std::uint64_t size() override {
        return crash_ == crash_t::in_rotation ? logging::receiver::log_size_limit : file_->size();
    }
    void compress(const std::shared_ptr<util::zip_writer_t>& writer) override {
        if (crash_ == crash_t::in_rotation) {
            writer->add("the first lines", 15);
            ::raise(SIGSEGV);
        }
        file_->compress(writer);
    }

private:
    std::shared_ptr<log_file_t> file_;
    crash_t crash_;
};

DWORD log_and_crash(void*) {
    log_info(logging::lib_logger(), "crash here");
    return 0;
}

DWORD rotate(void* receiver) {
    // The crash abandons the rotation's frames and what they hold, as it does in the tool: nothing
    // that the leak checker should report.
#if defined(__SANITIZE_ADDRESS__)
    __lsan_disable();
#endif
    logging::receiver::check_log_size(
        *static_cast<std::shared_ptr<logging::receiver::log_file_t>*>(receiver));
    return 0;
}

using abandoned_worker_test = crash_test::dump_folder_test;

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

TEST_F(abandoned_worker_test, a_worker_killed_while_it_waits_leaves_events_and_threads_working) {
    holder_t holder;
    win::win_thread_t worker(&hold_until_closed, &holder, "Holder");
    for (int i = 0; i < 5000 && (holder.thread_id.load() == 0 || !asleep(holder.thread_id.load())); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_TRUE(asleep(holder.thread_id.load()));
    ::syscall(SYS_tgkill, ::getpid(), holder.thread_id.load(), SIGSEGV);

    finish_in_time(
        [&] {
            worker.stop_wait_for(10000);
            EXPECT_EQ(worker.exit_code(), win::crashed_thread_exit_code);
            holder.close_event.set();
            win::win_thread_t next(&hold_until_closed, &holder, "Next");
            next.stop_wait_for(10000);
            EXPECT_EQ(next.exit_code(), win::wait_object_0);
        },
        "waits and events hang after the worker's death");
    EXPECT_EQ(monitoring::CThreadStatesCollection::get()->find(worker.thread_id()), nullptr);
    EXPECT_EQ(log_count("Thread finished. Role: 'Holder'."), 1u);
}

TEST_F(abandoned_worker_test, a_worker_that_crashes_inside_a_log_write_leaves_the_log_working) {
    logging::main_log()->install(std::make_shared<crashing_receiver_t>(logging::main_log()->receiver()),
                                 false);
    win::win_thread_t worker(&log_and_crash, nullptr, "Writer");
    finish_in_time(
        [&] {
            worker.stop_wait_for(10000);
            log_info(logging::lib_logger(), "the main thread goes on");
        },
        "the log hangs after the worker's death");
    EXPECT_EQ(worker.exit_code(), win::crashed_thread_exit_code);
    EXPECT_EQ(dump_names().size(), 1u);
    EXPECT_TRUE(log_has("the main thread goes on"));
    EXPECT_EQ(log_count("Thread finished. Role: 'Writer'."), 1u);
}

// Whatever stops an archive's writing, nothing but a whole archive bears an archive's name: the
// next rotation ages the good archives by one generation, not two.
TEST_F(abandoned_worker_test, a_worker_that_crashes_while_it_writes_an_archive_leaves_no_archive_behind) {
    log_test::write_archive(folder_ / "Mirrack.log.gz", "newest");
    log_info(logging::lib_logger(), "kept for the next archive");
    const auto file = logging::main_log()->receiver();
    std::shared_ptr<logging::receiver::log_file_t> crashing =
        std::make_shared<crashing_receiver_t>(file, crashing_receiver_t::crash_t::in_rotation);
    win::win_thread_t worker(&rotate, &crashing, "Rotator");
    finish_in_time([&] { worker.stop_wait_for(10000); }, "a rotation hangs after its worker's death");
    EXPECT_EQ(worker.exit_code(), win::crashed_thread_exit_code);
    EXPECT_EQ(log_test::names_in(folder_),
              (std::vector<std::string>{"Mirrack.log", "Mirrack.log.1.gz", "Mirrack.log.gz.partial"}));
    logging::receiver::set_log_size_limit_for_tests(1);
    logging::receiver::check_log_size(file);
    EXPECT_NE(log_test::gunzip(folder_ / "Mirrack.log.gz").find("kept for the next archive"),
              std::string::npos);
    EXPECT_EQ(log_test::gunzip(folder_ / "Mirrack.log.1.gz"), "newest");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "Mirrack.log.2.gz"));
}

TEST_F(undeletable_dumps_test, TwentyDumpsThatCannotGoMeanNoNewDump) {
    for (int id = 0; id < 20; ++id)
        add_old_dump("RZ_crash_" + std::to_string(id) + ".txt", 30 - id);
    EXPECT_EQ(crash::crash_filter(nullptr, crash::previous_filter_t::skip), crash::execute_handler);
    EXPECT_EQ(dump_names().size(), 20u);
    EXPECT_EQ(log_count("Old dump cannot be removed. Dump path: ["), 20u);
    EXPECT_TRUE(log_has("Access is denied."));
    EXPECT_TRUE(
        log_has("Cannot cleanup out of date dumps. There are [20] dumps stored. Maximum allowed dumps "
                "number: [20]."));
    EXPECT_TRUE(log_has("Cannot generate crash dump."));
    EXPECT_EQ(log_count("Crash handlers were successfully executed."), 1u);
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

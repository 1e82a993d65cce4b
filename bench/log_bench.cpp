// What a log line costs against writing the same bytes oneself, and what a rotation costs against gzip -9.
#include "common/logging/line_layout.h"
#include "common/logging/log.h"
#include "common/logging/log_file_receiver.h"
#include "common/logging/log_install.h"
#include "common/logging/log_rotation.h"
#include "common/logging/log_t.h"
#include "common/logging/prepare_log.h"
#include "common/win/thread_id.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

// Every allocation of the process is counted, so that a benchmark can say how many its items cost.
namespace {
std::atomic<std::uint64_t> g_allocations{0};
}

// All out of line: inlined, they show the compiler malloc() and free() meeting operator new and
// delete, which it warns of.
__attribute__((noinline)) void* operator new(std::size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

__attribute__((noinline)) void operator delete(void* memory) noexcept {
    std::free(memory);
}

__attribute__((noinline)) void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

// Allocations per item of a benchmark's timed loop.
class allocation_count_t {
public:
    allocation_count_t() : start_(g_allocations.load()) {}
    void report(benchmark::State& state) const {
        state.counters["allocs_per_item"] = per_item(static_cast<std::uint64_t>(state.iterations()));
    }
    double per_item(std::uint64_t items) const {
        return static_cast<double>(g_allocations.load() - start_) / static_cast<double>(items);
    }

private:
    std::uint64_t start_;
};

const std::string message = "Creating VSS backup object.";

fs::path bench_folder() {
    static const fs::path folder = [] {
        auto f = fs::temp_directory_path() / ("mirrack-log-bench-" + std::to_string(::getpid()));
        fs::create_directories(f);
        return f;
    }();
    return folder;
}

// The tool's log on a fresh file of its own, never rotated inside the timing, for as long as it lives.
class bench_log_t {
public:
    explicit bench_log_t(const std::string& name) {
        const fs::path path = bench_folder() / name;
        fs::remove(path);
        logging::receiver::set_log_size_limit_for_tests(UINT64_MAX);
        logging::install_log_file(path.string());
        write(); // the buffers are made
    }
    ~bench_log_t() {
        logging::main_log()->install(nullptr, false);
        logging::receiver::set_log_size_limit_for_tests(logging::receiver::log_size_limit);
    }
    bench_log_t(const bench_log_t&) = delete;
    bench_log_t& operator=(const bench_log_t&) = delete;

    // Formatting, the lock, one write, the size check every 1000 messages.
    void write() const { handle_.log->write(logging::level_info, 0, handle_.format.get(), message); }

private:
    const logging::logger_t& handle_ = logging::tool_logger();
};

// A file open for plain writes of the bytes of one log line.
class plain_file_t {
public:
    explicit plain_file_t(const std::string& name) {
        const fs::path path = bench_folder() / name;
        fs::remove(path);
        const std::string stamp = logging::format::timestamp_text(std::time(nullptr));
        const logging::format::message_head_t head{stamp, win::current_thread_id(), 0, "Mirrack| ", "\r\n"};
        line_ = logging::format::message_text(head, logging::level_info, 0, message);
        fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    }
    ~plain_file_t() { ::close(fd_); }
    plain_file_t(const plain_file_t&) = delete;
    plain_file_t& operator=(const plain_file_t&) = delete;

    void write() const { benchmark::DoNotOptimize(::write(fd_, line_.data(), line_.size())); }

private:
    std::string line_;
    int fd_ = -1;
};

void BM_log_write(benchmark::State& state) {
    const bench_log_t log("through-log.log");
    const allocation_count_t allocations;
    for (auto _ : state)
        log.write();
    allocations.report(state);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_log_write)->UseRealTime();

// The same through the call that the code uses, at the thread's own indent.
void BM_log_info(benchmark::State& state) {
    const bench_log_t log("through-log-info.log");
    const allocation_count_t allocations;
    for (auto _ : state)
        log_info(logging::tool_logger(), message);
    allocations.report(state);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_log_info)->UseRealTime();

// The same bytes, written by a plain loop of write() on the same kind of file.
void BM_plain_write(benchmark::State& state) {
    const plain_file_t plain("plain.log");
    const allocation_count_t allocations;
    for (auto _ : state)
        plain.write();
    allocations.report(state);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_plain_write)->UseRealTime();

// A moment on the wall clock and on the thread's CPU clock, which leaves out the time the thread
// waited for a core.
struct moment_t {
    std::chrono::steady_clock::time_point wall;
    timespec cpu{};

    static moment_t now() {
        moment_t m{std::chrono::steady_clock::now()};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &m.cpu);
        return m;
    }
    double wall_ns_to(const moment_t& later) const {
        return std::chrono::duration<double, std::nano>(later.wall - wall).count();
    }
    double cpu_ns_to(const moment_t& later) const {
        return static_cast<double>(later.cpu.tv_sec - cpu.tv_sec) * 1e9 +
               static_cast<double>(later.cpu.tv_nsec - cpu.tv_nsec);
    }
};

// Log lines and plain writes of the same bytes in alternating blocks, each block timed by itself:
// a load that drifts while the benchmark runs weighs on both alike, so the ratios are the figures
// to read on a busy machine.
void BM_log_against_plain(benchmark::State& state) {
    const bench_log_t log("side-by-side.log");
    const plain_file_t plain("side-by-side-plain.log");
    constexpr int block = 200;
    double log_wall = 0, log_cpu = 0, plain_wall = 0, plain_cpu = 0;
    const allocation_count_t allocations;
    for (auto _ : state) {
        const moment_t start = moment_t::now();
        for (int i = 0; i < block; ++i)
            log.write();
        const moment_t between = moment_t::now();
        for (int i = 0; i < block; ++i)
            plain.write();
        const moment_t end = moment_t::now();
        log_wall += start.wall_ns_to(between);
        log_cpu += start.cpu_ns_to(between);
        plain_wall += between.wall_ns_to(end);
        plain_cpu += between.cpu_ns_to(end);
    }
    const double lines = static_cast<double>(state.iterations()) * block;
    state.counters["allocs_per_item"] = allocations.per_item(static_cast<std::uint64_t>(lines));
    state.counters["log_ns"] = log_wall / lines;
    state.counters["plain_ns"] = plain_wall / lines;
    state.counters["ratio"] = log_wall / plain_wall;
    state.counters["log_cpu_ns"] = log_cpu / lines;
    state.counters["plain_cpu_ns"] = plain_cpu / lines;
    state.counters["cpu_ratio"] = log_cpu / plain_cpu;
}
BENCHMARK(BM_log_against_plain)->Repetitions(3)->UseRealTime();

// A log at its limit, of lines as the tool writes them.
const fs::path& full_log_sample() {
    static const fs::path sample = [] {
        const fs::path path = bench_folder() / "sample.log";
        std::ofstream out(path, std::ios::binary);
        std::uint64_t written = 0;
        for (std::uint64_t n = 0; written < logging::receiver::log_size_limit; ++n) {
            const std::string line = "[16.11.2026 05:22:" + std::to_string(10 + n % 50) +
                                     "] <  2840> Mirrack|   " + "Component " + std::to_string(n % 977) +
                                     " of writer {66841cd4-6ded-4f4b-8f17-" +
                                     "fd23f8ddc3de} added to the snapshot set, path C:\\VMs\\vm" +
                                     std::to_string(n % 13) + "\\disk.vhdx\r\n";
            out << line;
            written += line.size();
        }
        return path;
    }();
    return sample;
}

void BM_rotate_full_log(benchmark::State& state) {
    const std::string sample = [] {
        std::ifstream in(full_log_sample(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }();
    const fs::path path = bench_folder() / "rotating.log";
    fs::remove(path);
    auto receiver = logging::receiver::prepare_log(path.string());
    for (auto _ : state) {
        state.PauseTiming();
        receiver->write(sample);
        fs::remove(path.string() + ".gz");
        state.ResumeTiming();
        logging::receiver::check_log_size(receiver);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sample.size()));
}
BENCHMARK(BM_rotate_full_log)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

void BM_gzip9_full_log(benchmark::State& state) {
    const std::string command = "gzip -9 -c '" + full_log_sample().string() + "' > '" +
                                (bench_folder() / "sample.log.gz").string() + "'";
    for (auto _ : state)
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("gzip failed");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(full_log_sample())));
}
BENCHMARK(BM_gzip9_full_log)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    fs::remove_all(bench_folder());
    return 0;
}

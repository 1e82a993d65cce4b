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
        state.counters["allocs_per_item"] = benchmark::Counter(
            static_cast<double>(g_allocations.load() - start_) / static_cast<double>(state.iterations()));
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

// Messages through the logger: formatting, the lock, one write, the size check every 1000 messages.
void BM_log_write(benchmark::State& state) {
    const fs::path path = bench_folder() / "through-log.log";
    fs::remove(path);
    logging::receiver::set_log_size_limit_for_tests(UINT64_MAX); // no rotation inside the timing
    logging::install_log_file(path.string());
    const auto& handle = logging::tool_logger();
    handle.log->write(logging::level_info, 0, handle.format.get(), message); // the buffers are made
    const allocation_count_t allocations;
    for (auto _ : state)
        handle.log->write(logging::level_info, 0, handle.format.get(), message);
    allocations.report(state);
    state.SetItemsProcessed(state.iterations());
    logging::main_log()->install(nullptr, false);
    logging::receiver::set_log_size_limit_for_tests(logging::receiver::log_size_limit);
}
BENCHMARK(BM_log_write)->UseRealTime();

// The same through the call that the code uses, at the thread's own indent.
void BM_log_info(benchmark::State& state) {
    const fs::path path = bench_folder() / "through-log-info.log";
    fs::remove(path);
    logging::receiver::set_log_size_limit_for_tests(UINT64_MAX);
    logging::install_log_file(path.string());
    log_info(logging::tool_logger(), message);
    const allocation_count_t allocations;
    for (auto _ : state)
        log_info(logging::tool_logger(), message);
    allocations.report(state);
    state.SetItemsProcessed(state.iterations());
    logging::main_log()->install(nullptr, false);
    logging::receiver::set_log_size_limit_for_tests(logging::receiver::log_size_limit);
}
BENCHMARK(BM_log_info)->UseRealTime();

// The same bytes, written by a plain loop of write() on the same kind of file.
void BM_plain_write(benchmark::State& state) {
    const fs::path path = bench_folder() / "plain.log";
    fs::remove(path);
    const std::string stamp = logging::format::timestamp_text(std::time(nullptr));
    const logging::format::message_head_t head{stamp, win::current_thread_id(), 0, "Mirrack| ", "\r\n"};
    const std::string line = logging::format::message_text(head, logging::level_info, 0, message);
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    const allocation_count_t allocations;
    for (auto _ : state)
        benchmark::DoNotOptimize(::write(fd, line.data(), line.size()));
    allocations.report(state);
    ::close(fd);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_plain_write)->UseRealTime();

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

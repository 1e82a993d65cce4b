// DoSnapshotSet of the simulated host against copying the same tree with cp: a volume of
// 10,000 small files and a volume of one 1 GiB file. The simulator's counters show its time
// as a multiple of cp -a and of cp --reflink=auto, measured on the same tree.
#include "compat/com_ptr.h"
#include "compat/vss_api.h"

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>

namespace fs = std::filesystem;
using clock_type = std::chrono::steady_clock;

namespace {

const char host_xml[] = R"(<Host name="BENCH">
  <Volume name="\\?\Volume{be0c0000-0000-0000-0000-000000000001}\" dir="volumes/c" mount="C:\"/>
  <Provider id="{b5946137-7b9f-4925-af80-51abd60b20d5}" type="system"/>
  <Writer id="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" instance="{be0c0000-0000-0000-0000-0000000000aa}"
          name="Microsoft Hyper-V VSS Writer"/>
</Host>
)";

enum class layout { small_files, one_big_file };

void write_file(const fs::path& file, std::size_t size, const std::string& block) {
    std::ofstream out(file, std::ios::binary);
    for (std::size_t done = 0; done < size; done += block.size())
        out.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), size - done)));
}

// One host per layout, made once for the whole run and removed at exit.
const fs::path& bench_host(layout kind) {
    static std::map<layout, fs::path> hosts;
    auto found = hosts.find(kind);
    if (found != hosts.end())
        return found->second;
    std::string pattern = (fs::temp_directory_path() / "mirrack-hostsim-bench-XXXXXX").string();
    fs::path dir = mkdtemp(pattern.data());
    std::ofstream(dir / "host.xml") << host_xml;
    const fs::path volume = dir / "volumes" / "c";
    if (kind == layout::small_files) {
        const std::string block(4096, 's');
        for (int d = 0; d < 100; ++d) {
            fs::create_directories(volume / ("dir" + std::to_string(d)));
            for (int f = 0; f < 100; ++f)
                write_file(volume / ("dir" + std::to_string(d)) / ("file" + std::to_string(f) + ".bin"), 4096,
                           block);
        }
    } else {
        fs::create_directories(volume);
        std::string block(1 << 20, '\0');
        for (std::size_t i = 0; i < block.size(); ++i)
            block[i] = static_cast<char>(i * 131 + 7);
        write_file(volume / "disk.vhdx", std::size_t(1) << 30, block);
    }
    static struct cleanup_t {
        ~cleanup_t() {
            std::error_code ignored;
            for (auto& [kind, dir] : hosts)
                fs::remove_all(dir, ignored);
        }
    } cleanup;
    return hosts.emplace(kind, dir).first->second;
}

HRESULT wait_for(compat::com_ptr_t<IVssAsync> async) {
    HRESULT status = VSS_S_ASYNC_PENDING;
    while (async->QueryStatus(&status, nullptr) == S_OK && status == VSS_S_ASYNC_PENDING)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return status;
}

compat::com_ptr_t<IVssBackupComponents> prepared_backup() {
    compat::com_ptr_t<IVssBackupComponents> backup;
    compat::com_ptr_t<IVssAsync> async;
    VSS_ID set{}, snapshot{};
    WCHAR volume[] = L"C:\\";
    CreateVssBackupComponentsInternal(backup.put());
    backup->InitializeForBackup();
    backup->GatherWriterMetadata(async.put());
    wait_for(async);
    backup->StartSnapshotSet(&set);
    backup->AddToSnapshotSet(volume, GUID_NULL, &snapshot);
    backup->SetBackupState(true, true, VSS_BT_FULL, false);
    backup->PrepareForBackup(async.put());
    wait_for(async);
    return backup;
}

double seconds_since(clock_type::time_point start) {
    return std::chrono::duration<double>(clock_type::now() - start).count();
}

double copy_seconds(layout kind, const char* options) {
    const fs::path source = bench_host(kind) / "volumes" / "c";
    const fs::path target = bench_host(kind) / "cp-target";
    const std::string command =
        std::string("cp ") + options + " '" + source.string() + "' '" + target.string() + "'";
    auto start = clock_type::now();
    if (std::system(command.c_str()) != 0)
        return 0;
    double seconds = seconds_since(start);
    fs::remove_all(target);
    return seconds;
}

// The fastest run of each way of copying, for the ratios: the fastest is the one least
// disturbed by whatever else the machine does.
std::map<std::string, double>& fastest() {
    static std::map<std::string, double> times;
    return times;
}

void note_time(const std::string& what, double seconds) {
    auto [it, fresh] = fastest().emplace(what, seconds);
    if (!fresh)
        it->second = std::min(it->second, seconds);
}

std::string name_of(layout kind, const char* options) {
    return std::string(kind == layout::small_files ? "small" : "big") + " " + options;
}

double reference_seconds(layout kind, const char* options) {
    const auto name = name_of(kind, options);
    if (!fastest().count(name))
        note_time(name, copy_seconds(kind, options));
    return fastest()[name];
}

// The copies first, so that the simulator's ratios use the times they measured.
void BM_Copy(benchmark::State& state, layout kind, const char* options) {
    for (auto _ : state) {
        double seconds = copy_seconds(kind, options);
        note_time(name_of(kind, options), seconds);
        state.SetIterationTime(seconds);
    }
}

void BM_DoSnapshotSet(benchmark::State& state, layout kind) {
    setenv("MIRRACK_HOST", bench_host(kind).c_str(), 1);
    double best = 1e9;
    for (auto _ : state) {
        auto backup = prepared_backup();
        compat::com_ptr_t<IVssAsync> async;
        auto start = clock_type::now();
        backup->DoSnapshotSet(async.put());
        if (wait_for(async) != VSS_S_ASYNC_FINISHED)
            state.SkipWithError("DoSnapshotSet failed");
        double seconds = seconds_since(start);
        best = std::min(best, seconds);
        state.SetIterationTime(seconds);
        async.reset();
        backup.reset(); // the copy goes with the object
    }
    state.counters["x_cp_a"] = best / reference_seconds(kind, "-a");
    state.counters["x_cp_reflink"] = best / reference_seconds(kind, "-a --reflink=auto");
}

} // namespace

BENCHMARK_CAPTURE(BM_Copy, cp_a_small_files_10000, layout::small_files, "-a")
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Copy, cp_reflink_small_files_10000, layout::small_files, "-a --reflink=auto")
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DoSnapshotSet, small_files_10000, layout::small_files)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Copy, cp_a_one_file_1GiB, layout::one_big_file, "-a")
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Copy, cp_reflink_one_file_1GiB, layout::one_big_file, "-a --reflink=auto")
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(BM_DoSnapshotSet, one_file_1GiB, layout::one_big_file)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();

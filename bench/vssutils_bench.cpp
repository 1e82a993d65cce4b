// The volume set under many backup items on a handful of volumes: the cost per item must not grow
// with the number of items already added.
#include "vssutils/volumes_holder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const char* const drive_letters[] = {"C", "D", "E", "F"};

// A host with four local volumes, each with one folder of VM files; selected for the whole run.
class bench_host_t {
public:
    bench_host_t() {
        std::string pattern = (fs::temp_directory_path() / "mirrack-vssutils-bench-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
        std::ofstream xml(dir_ / "host.xml");
        xml << "<Host name=\"BENCH\">\n";
        int number = 1;
        for (const char* letter : drive_letters) {
            xml << "  <Volume name=\"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-00000000000" << number++
                << "}\\\" dir=\"volumes/" << letter << "\" mount=\"" << letter << ":\\\"/>\n";
            fs::create_directories(dir_ / "volumes" / letter / "VMs");
        }
        xml << "</Host>\n";
        setenv("MIRRACK_HOST", dir_.c_str(), 1);
    }
    ~bench_host_t() {
        unsetenv("MIRRACK_HOST");
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
    }

private:
    fs::path dir_;
};

// Items that don't exist yet in an existing folder, spread over the volumes in turn.
std::vector<std::wstring> backup_items(std::size_t count) {
    std::vector<std::wstring> items;
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::string letter = drive_letters[i % std::size(drive_letters)];
        items.push_back(std::wstring(letter.begin(), letter.end()) + L":\\VMs\\disk" + std::to_wstring(i) +
                        L".vhdx");
    }
    return items;
}

void AddBackupItem(benchmark::State& state) {
    static bench_host_t host;
    const auto items = backup_items(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        VSSUtils::CVolumesHolder holder;
        for (const auto& item : items)
            benchmark::DoNotOptimize(holder.AddBackupItem(item, VSSUtils::BackupComponentsPtr()));
    }
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(AddBackupItem)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

BENCHMARK_MAIN();

// The whole creation of a snapshot by the real tool on sample hosts of growing
// size: the time from BeginSnapshotCreation to the first GetAsyncOpStatus that
// reads IsCompleted "true", the tool's CPU time and its peak memory by then. The hosts come
// from bench/snapshot_scale.sh through MIRRACK_BENCH_HOSTS ("VMS=DIR,VMS=DIR,...",
// each DIR made by mirrack-lab create, with its spec.xml).
#include "client/invoke_client.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string read_text(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// VmHWM of a process, in kB.
long peak_rss_kb(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    return -1;
}

// User and system CPU time of a process so far, in ms: on a busy machine
// steadier figures than the wall clock.
struct cpu_time_t {
    double user = 0;
    double system = 0;
};

cpu_time_t cpu_ms(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long user = 0, system = 0;
    for (int i = 3; i <= 15 && fields >> field; ++i) {
        if (i == 14)
            user = std::stoul(field);
        if (i == 15)
            system = std::stoul(field);
    }
    const double tick_ms = 1000.0 / static_cast<double>(::sysconf(_SC_CLK_TCK));
    return {static_cast<double>(user) * tick_ms, static_cast<double>(system) * tick_ms};
}

// One run of the tool in pipe mode on a host, killed at the end if it hasn't ended.
class tool_process_t {
public:
    tool_process_t(const fs::path& host, const fs::path& folder) {
        const fs::path tool = fs::read_symlink("/proc/self/exe").parent_path() / "mirrack";
        pid_ = ::fork();
        if (pid_ == 0) {
            ::setenv("MIRRACK_HOST", host.c_str(), 1);
            ::setenv("MIRRACK_PIPE_DIR", folder.c_str(), 1);
            const int output = ::open((folder / "stdout.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            ::dup2(output, 1);
            ::dup2(output, 2);
            const std::string log = (folder / "tool.log").string();
            ::execl(tool.c_str(), tool.c_str(), "-p", "-n", "bench-snapshot", "-o", "LOG", "-log",
                    log.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
    }
    ~tool_process_t() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    pid_t pid() const { return pid_; }

private:
    pid_t pid_ = -1;
};

void SnapshotCreation(benchmark::State& state, const fs::path& host) {
    const std::wstring spec = [&] {
        const std::string text = read_text(host / "spec.xml");
        return std::wstring(text.begin(), text.end());
    }();
    long peak = 0;
    cpu_time_t cpu;
    for (auto _ : state) {
        const fs::path folder = fs::temp_directory_path() / ("mirrack-bench-" + std::to_string(::getpid()));
        fs::create_directories(folder);
        fs::permissions(folder, fs::perms::owner_all);
        {
            tool_process_t tool(host, folder);
            ::setenv("MIRRACK_PIPE_DIR", folder.c_str(), 1);
            auto connection = client::CInvokeClient::Connect(L"bench-snapshot");

            const auto start = std::chrono::steady_clock::now();
            const auto begin =
                connection->Call(L"BeginSnapshotCreation", client::CRequestArguments()
                                                               .AddText(L"JobName", L"bench")
                                                               .AddText(L"BackupConsole", L"bench")
                                                               .AddEncoded(L"SnapshotXmlSpec", spec));
            bool succeeded = false;
            for (bool completed = false; begin.IsSuccess() && !completed;) {
                const auto status = connection->Call(L"GetAsyncOpStatus", client::CRequestArguments());
                completed = status.Value(L"IsCompleted") == L"true";
                succeeded = status.Value(L"IsSucceeded") == L"true";
                if (!completed)
                    std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            state.SetIterationTime(
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
            peak = std::max(peak, peak_rss_kb(tool.pid()));
            const cpu_time_t used = cpu_ms(tool.pid());
            cpu.user += used.user;
            cpu.system += used.system;
            connection->Call(L"CloseSnapshot", client::CRequestArguments());
            connection->Disconnect();
            if (!succeeded)
                state.SkipWithError("the snapshot failed; see the tool's log");
        }
        fs::remove_all(folder);
    }
    state.counters["peak_rss_kB"] = static_cast<double>(peak);
    state.counters["user_ms"] = cpu.user / static_cast<double>(state.iterations());
    state.counters["system_ms"] = cpu.system / static_cast<double>(state.iterations());
}

} // namespace

int main(int argc, char** argv) {
    const char* hosts = std::getenv("MIRRACK_BENCH_HOSTS");
    std::istringstream list(hosts ? hosts : "");
    for (std::string entry; std::getline(list, entry, ',');) {
        const auto equals = entry.find('=');
        if (equals == std::string::npos)
            continue;
        const fs::path dir = entry.substr(equals + 1);
        benchmark::RegisterBenchmark(("SnapshotCreation/vms:" + entry.substr(0, equals)).c_str(),
                                     [dir](benchmark::State& state) { SnapshotCreation(state, dir); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(3);
    }
    if (!hosts)
        std::fprintf(stderr, "No hosts: run bench/snapshot_scale.sh.\n");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

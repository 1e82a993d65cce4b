// The server's own cost of one request, from the frame's bytes to the response frame's bytes (no
// pipe I/O, no pause between commands), against the platform's XML library alone parsing and
// writing the same documents: pugixml on POSIX (server_floor_posix.cpp), MSXML on Windows
// (server_floor_win32.cpp).
#include "bench/server_requests.h"
#include "invoke/invoke_server_com.h"
#include "invoke/pipe_invoke_server.h"
#include "invoke/pipe_text.h"
#include "tool/process_platform.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace server_bench;

void run_server_side(benchmark::State& state, const std::wstring& request) {
    wrap::CPipeInvokeSrv server(fresh_pipe_name(), make_dispatcher());
    const win::pipes::byte_buffer_t frame = win::pipes::EncodeFrameText(request);
    // A refused request is answered quickly, and its time would pass for the work's. The error
    // text carries the whole request: its start is enough.
    const std::wstring response = win::pipes::DecodeFrameText(server.ExecuteFrame(frame)).text;
    if (!response.starts_with(L"xml:")) {
        state.SkipWithError(narrow(response.substr(0, 200)).c_str());
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(server.ExecuteFrame(frame));
}

void BM_Server_GetAsyncOpStatus(benchmark::State& state) {
    run_server_side(state, small_request);
}
BENCHMARK(BM_Server_GetAsyncOpStatus)->Unit(benchmark::kMicrosecond);

// The cost per item must stay flat from a small list to a large one.
void BM_Server_FilesList(benchmark::State& state) {
    run_server_side(state, files_list_request(static_cast<int>(state.range(0))));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Server_FilesList)->Arg(2500)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    // The tool's main thread holds COM for its whole run, so each request's own scope only nests
    // in it; the floor's documents need it too. Nothing where the platform has no COM.
    const wrap::CRequestComScope com;
    // The requests are served with the allocator set as the tool sets it; the floor runs with
    // the same setting.
    tool::KeepFreedMemoryForNextRequests();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

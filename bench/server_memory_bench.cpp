// The server's peak resident memory while it serves one request whose document is about 40 MB,
// from the frame's bytes to the response frame's bytes, as a multiple of the document's size:
// once for a command that leaves the document unread beyond its parsing, once for the conversion
// of the items list that it carries. Read from the kernel's count, which the benchmark resets
// before each request.
#include "bench/server_requests.h"
#include "invoke/pipe_invoke_server.h"
#include "invoke/pipe_text.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <malloc.h>
#include <string>

namespace {

using namespace server_bench;

// An items list of this many is about 30 MB, and 40 MB as Base64 in the request.
constexpr int item_count = 120000;

const std::wstring& conversion_request() {
    static const std::wstring request = files_list_request(item_count);
    return request;
}

// A field of /proc/self/status in kilobytes: VmRSS now, VmHWM the most since the last reset.
double status_mb(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string name;
    double kb = 0;
    while (status >> name) {
        if (name == field) {
            status >> kb;
            break;
        }
        status.ignore(1 << 10, '\n');
    }
    return kb / 1024;
}

void reset_peak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

void measure_peak(benchmark::State& state, const std::wstring& request) {
    wrap::CPipeInvokeSrv server(fresh_pipe_name(), make_dispatcher());
    const double document_mb = static_cast<double>(document_of(request).size()) / (1024 * 1024);
    double peak_mb = 0;
    for (auto _ : state) {
        // What the benchmark freed while it built the request would otherwise stay resident and
        // take the frame unseen.
        ::malloc_trim(0);
        const double before_mb = status_mb("VmRSS:");
        win::pipes::byte_buffer_t frame = win::pipes::EncodeFrameText(request);
        reset_peak();
        const win::pipes::byte_buffer_t response = server.ExecuteFrame(std::move(frame));
        peak_mb = status_mb("VmHWM:") - before_mb;
        if (response.size() < 8 || response[0] != 'x') {
            state.SkipWithError("the server refused the request");
            return;
        }
    }
    state.counters["document_MB"] = document_mb;
    state.counters["peak_MB"] = peak_mb;
    state.counters["peak_per_document"] = peak_mb / document_mb;
}

void BM_ServerPeak_DocumentOnly(benchmark::State& state) {
    std::wstring request = conversion_request();
    request.replace(0, request.find(L' '), L"cmd:GetAsyncOpStatus");
    measure_peak(state, request);
}
BENCHMARK(BM_ServerPeak_DocumentOnly)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_ServerPeak_ItemsConversion(benchmark::State& state) {
    measure_peak(state, conversion_request());
}
BENCHMARK(BM_ServerPeak_ItemsConversion)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();

// Cost of filling a typical four-marker message template, and of the text conversions over a
// document that is mostly ASCII with a non-ASCII character every few words.
#include "common/exc/convert.h"
#include "common/format/format.h"

#include <benchmark/benchmark.h>

namespace {

void BM_FormatMessageFourArguments(benchmark::State& state) {
    const std::string fmt =
        "Failed to add volume [%1] to snapshot set. Provider: [%2]. Job: '%3'. Console: '%4'.";
    const std::string volume = "\\\\?\\Volume{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}\\";
    const std::string provider = "{b5946137-7b9f-4925-af80-51abd60b20d5}";
    const std::string job = "Nightly backup";
    const std::string console = "console.example";
    for (auto _ : state)
        benchmark::DoNotOptimize(format_message(fmt, volume, provider, job, console));
}
BENCHMARK(BM_FormatMessageFourArguments);

std::wstring MixedDocument() {
    std::wstring text;
    while (text.size() < (1u << 20))
        text += L"<File Path=\"C:\\VMs\\caf\u00e9\\disk\u20ac.vhdx\" Mask=\"*\"/>";
    return text;
}

void BM_ConvertToUtf8_MixedDocument(benchmark::State& state) {
    const std::wstring text = MixedDocument();
    for (auto _ : state)
        benchmark::DoNotOptimize(to_utf8(text));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ConvertToUtf8_MixedDocument)->Unit(benchmark::kMicrosecond);

void BM_ConvertFromUtf8_MixedDocument(benchmark::State& state) {
    const std::string text = to_utf8(MixedDocument());
    for (auto _ : state)
        benchmark::DoNotOptimize(from_utf8(text));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ConvertFromUtf8_MixedDocument)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();

// Cost of filling a typical four-marker message template.
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

} // namespace

BENCHMARK_MAIN();

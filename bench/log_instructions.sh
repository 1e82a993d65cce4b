#!/usr/bin/env bash
# Instructions per log line against a plain write() of the same bytes, counted by callgrind in one
# run of log_bench: a figure that a machine loaded by other work does not blur, unlike the times.
# Only the instructions of the process count; the kernel's side of write() is the same for both.
#   bench/log_instructions.sh [build-dir]      (needs valgrind)
set -euo pipefail
build=${1:-build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

valgrind --tool=callgrind --callgrind-out-file="$work/profile" "$build/bin/log_bench" \
    --benchmark_filter='BM_log_write|BM_plain_write' --benchmark_min_time=0.05 >"$work/run" 2>&1 ||
    {
        cat "$work/run" >&2
        exit 1
    }

# Each callee in the caller tree is listed under its callers ("< ... caller (N x)"), with its own
# line ("* ... callee"): the inclusive cost of the calls from one benchmark loop and their count.
callgrind_annotate --inclusive=yes --tree=caller --threshold=100 "$work/profile" | awk '
    function cost_of(line,    cost) {
        cost = line; sub(/^ */, "", cost); sub(/ .*/, "", cost); gsub(/,/, "", cost)
        return cost + 0
    }
    function calls_of(line,    calls) {
        calls = line; sub(/.*\(/, "", calls); sub(/x\).*/, "", calls); gsub(/,/, "", calls)
        return calls + 0
    }
    /%\)  < / { callers[++n] = $0; next }
    /%\)  \*  / {
        for (i = 1; i <= n; ++i) {
            if ($0 ~ /logging::log_t::write\(int/) {
                log_cost += cost_of(callers[i]); log_calls += calls_of(callers[i])
            } else if ($0 ~ /:write \[.*libc/ && callers[i] ~ /BM_plain_write|plain_file_t::write/) {
                plain_cost += cost_of(callers[i]); plain_calls += calls_of(callers[i])
            }
        }
        n = 0
    }
    END {
        if (log_calls == 0 || plain_calls == 0) { print "log_instructions: no calls found" > "/dev/stderr"; exit 1 }
        printf "%-28s %10s\n", "instructions per line", "count"
        printf "%-28s %10.0f\n", "log_t::write", log_cost / log_calls
        printf "%-28s %10.0f\n", "write() alone", plain_cost / plain_calls
    }'

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
callgrind_annotate --inclusive=yes --tree=caller "$work/profile" | awk '
    # Callers come largest first: the timed loop before the one call that warms the log up.
    /%\)  < .*BM_log_write\(benchmark::State&\) \([0-9,]+x\)/ && log_caller == "" { log_caller = $0 }
    /%\)  < .*BM_plain_write\(benchmark::State&\) \([0-9,]+x\)/ && plain_caller == "" { plain_caller = $0 }
    /%\)  \*  .*logging::log_t::write\(int/ && log_caller != "" { log_line = log_caller }
    /%\)  \*  .*:write \[.*libc/ && plain_caller != "" { plain_line = plain_caller }
    /%\)  \*  / { log_caller = ""; plain_caller = "" }
    function per_call(line,    cost, calls) {
        cost = line; sub(/^ */, "", cost); sub(/ .*/, "", cost); gsub(/,/, "", cost)
        calls = line; sub(/.*\(/, "", calls); sub(/x\).*/, "", calls); gsub(/,/, "", calls)
        return cost / calls
    }
    END {
        if (log_line == "" || plain_line == "") { print "log_instructions: no calls found" > "/dev/stderr"; exit 1 }
        log_cost = per_call(log_line); plain_cost = per_call(plain_line)
        printf "%-28s %10s\n", "instructions per line", "count"
        printf "%-28s %10.0f\n", "log_t::write", log_cost
        printf "%-28s %10.0f\n", "write() alone", plain_cost
    }'

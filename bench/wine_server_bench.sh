#!/usr/bin/env bash
# The Windows build's server benchmark under Wine, three repetitions, then the server's time over
# MSXML's alone for each request: a ratio within one build, as Wine's MSXML is not Windows' and
# its times say nothing of Windows' own.
#   bench/wine_server_bench.sh [benchmark options...]    (after a cross-build with MIRRACK_BENCH=ON)
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OUT=${MIRRACK_CROSS_DIR:-$ROOT/build-win}
source "$ROOT/.ci/wine.sh"

wine_install
wine_start "$OUT/wine-prefix"

# The repetitions of the server and of the floor interleave, so that a load that comes and goes on
# the machine (Wine's server calls feel it most) falls on both alike. The aggregates are kept
# beside the build; Wine sees the Unix root as drive Z:.
results=$OUT/wine-server-bench.csv
timeout 3600 wine "$OUT/build/bin/server_bench.exe" --benchmark_repetitions=3 \
    --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
    --benchmark_out="Z:$results" --benchmark_out_format=csv "$@"

# Each floor's median pairs with the server's of the same request; a request that either side
# could not run has no ratio (its error is in the output above).
echo
printf "%-24s %14s %14s %12s %11s\n" "median" "server" "MSXML alone" "ratio (real)" "ratio (cpu)"
awk -F, '
    $1 ~ /^"BM_(Server|MsxmlAlone)_/ {
        name = $1
        gsub(/"/, "", name)
        median = sub(/_median$/, "", name)
        if (!median && $9 != "true")
            next
        side = name ~ /^BM_Server_/ ? "server" : "floor"
        sub(/^BM_(Server|MsxmlAlone)_/, "", name)
        seen[name] = 1
        if (median) {
            real[side, name] = $3
            cpu[side, name] = $4
            unit[name] = $5
        }
    }
    END {
        for (k in seen) {
            if (!(("server", k) in real) || !(("floor", k) in real)) {
                printf "%-24s no ratio: an error above\n", k
                continue
            }
            printf "%-24s %11.3f %-2s %11.3f %-2s %12.2f %11.2f\n", k, real["server", k], unit[k],
                real["floor", k], unit[k], real["server", k] / real["floor", k], cpu["server", k] / cpu["floor", k]
        }
    }' "$results" | sort -V

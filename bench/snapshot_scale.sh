#!/usr/bin/env bash
# Snapshot creation by the tool on sample hosts of 50, 100, 200 and 1024 VMs (the most
# that one Hyper-V host runs) with 20 files each (direct files and wildcard specs): time
# to IsCompleted "true", the tool's user and system CPU and its peak memory.
# Usage: bench/snapshot_scale.sh [BUILD_DIR [BENCHMARK OPTIONS...]] (default: build).
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD=$(cd "${1:-$ROOT/build}" && pwd)
cmake --build "$BUILD" -j "$(nproc)" --target mirrack mirrack-lab snapshot_scale_bench >/dev/null

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
HOSTS=""
# The sample host puts one VM on a cluster shared volume and one on a share beside those on C:.
for total in 50 100 200 1024; do
    "$BUILD/bin/mirrack-lab" create "$WORK/host-$total" --vms $((total - 2)) --files-per-vm 20 \
        --file-size 4K >/dev/null
    HOSTS="${HOSTS:+$HOSTS,}$total=$WORK/host-$total"
done
MIRRACK_BENCH_HOSTS="$HOSTS" "$BUILD/bin/snapshot_scale_bench" "${@:2}"

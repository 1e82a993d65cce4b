#!/bin/sh
# Builds the fuzz targets with clang and runs each one for a while.
#   fuzz/run.sh [seconds] [target ...]     (default 30 seconds; every target when none is named)
# Targets are named without their "fuzz_" prefix, e.g. "base64". The seed files of
# fuzz/corpus/<target> are read, never written: what the fuzzer finds goes to the corpus
# and artifact folders of the build directory.
set -eu

seconds=${1:-30}
[ $# -gt 0 ] && shift
source_dir=$(cd "$(dirname "$0")/.." && pwd)
build_dir=${MIRRACK_FUZZ_BUILD_DIR:-$source_dir/build-fuzz}

# The options of "./run.sh fuzz-replay", which shares the folder: switching between the two
# rebuilds nothing.
cmake -S "$source_dir" -B "$build_dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_C_COMPILER=clang -DMIRRACK_FUZZ=ON -DMIRRACK_TESTS=ON -DMIRRACK_BENCH=OFF \
    "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG" >/dev/null

if [ $# -gt 0 ]; then
    targets="$*"
else
    targets=$(for f in "$source_dir"/fuzz/*_fuzz.cpp; do basename "$f" _fuzz.cpp; done)
fi
cmake --build "$build_dir" -j"$(nproc)" --target $(for t in $targets; do printf 'fuzz_%s ' "$t"; done)

failed=""
summary=""
for target in $targets; do
    corpus="$build_dir/fuzz-corpus/$target"
    artifacts="$build_dir/fuzz-artifacts/$target"
    log="$build_dir/fuzz-logs/$target.log"
    mkdir -p "$corpus" "$artifacts" "$(dirname "$log")"
    echo "== $target: $seconds s"
    case $target in
    arguments | items_list | snapshot_ids | backup_spec | client_documents) set -- -dict="$source_dir/fuzz/dict/xml.dict" ;;
    *) set -- ;;
    esac
    status=0
    "$build_dir/bin/fuzz_$target" "$@" -max_total_time="$seconds" -print_final_stats=1 \
        -artifact_prefix="$artifacts/" "$corpus" "$source_dir/fuzz/corpus/$target" >"$log" 2>&1 || status=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    line="$target: ${runs:-?} runs, ${rate:-?} exec/s"
    if [ "$status" -ne 0 ]; then
        line="$line, FAILED (see $log and $artifacts)"
        failed="$failed $target"
    fi
    echo "$line"
    summary="$summary$line
"
done

printf '\n%s' "$summary"
if [ -n "$failed" ]; then
    echo "Failed:$failed"
    exit 1
fi

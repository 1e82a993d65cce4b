#!/usr/bin/env bash
# The way in: ./run.sh demo (the main job), ./run.sh test (the whole test suite).
set -euo pipefail
cd "$(dirname "$0")"
ROOT=$(pwd)
JOBS=$(nproc 2>/dev/null || echo 2)

PACKAGES=(cmake ninja-build g++ make pkg-config zlib1g-dev libtinyxml-dev libpugixml-dev libboost-program-options-dev
          libgtest-dev libgmock-dev libbenchmark-dev)

need_packages() {
    local missing=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    if ((${#missing[@]})); then
        echo "Installing: ${missing[*]}"
        local sudo=""
        [ "$(id -u)" = 0 ] || sudo="sudo"
        # Another apt or dpkg at work holds the lock: wait for it rather than fail.
        $sudo apt-get -o DPkg::Lock::Timeout=900 update -qq
        DEBIAN_FRONTEND=noninteractive $sudo apt-get -o DPkg::Lock::Timeout=900 install -y -qq "${missing[@]}" \
            >/dev/null
    fi
}

# CI builds from cold: one translation unit per batch of sources (MIRRACK_UNITY=ON) parses each
# header a batch needs once, and MIRRACK_WERROR=ON fails on a warning. A developer's rebuild of
# one file wants neither.
CI_FLAGS=(-DMIRRACK_WERROR="${MIRRACK_WERROR:-OFF}" -DCMAKE_UNITY_BUILD="${MIRRACK_UNITY:-OFF}"
          -DCMAKE_UNITY_BUILD_BATCH_SIZE=16)

# A new build folder is made for Ninja, which compiles a target's sources while the libraries it
# links are still being built; a folder configured before keeps its own generator.
export CMAKE_GENERATOR=${CMAKE_GENERATOR:-Ninja}

configure_and_build() { # build-dir [cmake args...]
    local dir=$1
    shift
    cmake -S "$ROOT" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${CI_FLAGS[@]}" "$@" >/dev/null
    cmake --build "$dir" -j "$JOBS"
}

cmd_build() {
    need_packages "${PACKAGES[@]}"
    configure_and_build build
}

cmd_test() {
    cmd_build
    (cd build && ctest --output-on-failure -j "$JOBS" --timeout 600)
}

# The sanitizer builds: tests only, lightly optimised, line tables alone for the reports; full
# debug info and the benchmarks would cost build time and give the reports nothing.
LIGHT_DEBUG=("-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG")

cmd_tsan() {
    need_packages "${PACKAGES[@]}"
    configure_and_build build-tsan -DMIRRACK_SANITIZE=thread -DMIRRACK_BENCH=OFF "${LIGHT_DEBUG[@]}"
    (cd build-tsan && TSAN_OPTIONS="halt_on_error=1" ctest --output-on-failure -j "$JOBS" --timeout 900)
}

cmd_asan() {
    need_packages "${PACKAGES[@]}"
    configure_and_build build-asan -DMIRRACK_SANITIZE=address -DMIRRACK_BENCH=OFF "${LIGHT_DEBUG[@]}"
    # UBSan goes on after a report unless told to stop: a report must fail its test.
    (cd build-asan && UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1" ctest --output-on-failure -j "$JOBS" \
        --timeout 900)
}

# Every fuzz target over its seeds and the inputs it once failed on, with clang's libFuzzer.
cmd_fuzz_replay() {
    need_packages "${PACKAGES[@]}" clang libclang-rt-dev
    cmake -S "$ROOT" -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
        -DCMAKE_CXX_COMPILER=clang++ "${CI_FLAGS[@]}" -DMIRRACK_FUZZ=ON -DMIRRACK_TESTS=ON -DMIRRACK_BENCH=OFF \
        "${LIGHT_DEBUG[@]}" >/dev/null
    local targets=()
    for source in "$ROOT"/fuzz/*_fuzz.cpp; do
        targets+=("fuzz_$(basename "$source" _fuzz.cpp)")
    done
    cmake --build build-fuzz -j "$JOBS" --target "${targets[@]}"
    (cd build-fuzz && ctest --output-on-failure -j "$JOBS" -R '^fuzz_' --timeout 600)
}

cmd_cross() {
    need_packages cmake ninja-build g++-mingw-w64-x86-64 mingw-w64-x86-64-dev dpkg-dev xz-utils
    bash "$ROOT/.ci/cross-windows.sh"
}

cmd_wine() {
    cmd_cross
    need_packages wine wine64
    bash "$ROOT/.ci/wine-tests.sh"
}

# The Windows bundle that an administrator downloads, checked once made:
# build-win/mirrack-VERSION-win64.zip.
cmd_package() {
    cmd_cross
    need_packages zip unzip
    bash "$ROOT/packaging/package-windows.sh"
}

# The Windows tests under Wine with their lines counted, in build-win-cov/: the share of lines
# run in every *_win32.cpp file, and what Wine cannot reach.
cmd_wine_coverage() {
    need_packages cmake ninja-build g++-mingw-w64-x86-64 mingw-w64-x86-64-dev dpkg-dev xz-utils wine wine64
    bash "$ROOT/.ci/wine-coverage.sh"
}

# Not in CI: the Windows build's server benchmark under Wine, against MSXML alone.
cmd_wine_bench() {
    MIRRACK_CROSS_BENCH=ON cmd_cross
    need_packages wine wine64
    bash "$ROOT/bench/wine_server_bench.sh"
}

cmd_bench() {
    cmd_build
    for b in build/bin/*_bench; do
        [ -x "$b" ] && "$b" --benchmark_min_time=0.2
    done
}

# Random jobs against the real tool for ten minutes, with a seed of its own; a broken invariant
# stops it with the seed and the command that replays the job.
cmd_soak() {
    cmd_build
    "$ROOT/build/bin/mirrack-lab" soak "$ROOT/build/soak" --minutes "${SOAK_MINUTES:-10}" --parallel 3 --offhost
}

# Every tracked C++ source as clang-format would leave it.
cmd_format_check() {
    need_packages clang-format
    git -C "$ROOT" ls-files -z '*.cpp' '*.h' | (cd "$ROOT" && xargs -0 clang-format --dry-run -Werror)
}

cmd_demo() {
    cmd_build
    if [ -x "$ROOT/lab/demo.sh" ]; then
        bash "$ROOT/lab/demo.sh" "$ROOT/build/bin"
    else
        echo "The demo is not built yet."
        exit 1
    fi
}

case "${1:-demo}" in
build) cmd_build ;;
test) cmd_test ;;
tsan) cmd_tsan ;;
asan) cmd_asan ;;
fuzz-replay) cmd_fuzz_replay ;;
cross) cmd_cross ;;
wine) cmd_wine ;;
package) cmd_package ;;
wine-coverage) cmd_wine_coverage ;;
wine-bench) cmd_wine_bench ;;
bench) cmd_bench ;;
soak) cmd_soak ;;
format-check) cmd_format_check ;;
demo) cmd_demo ;;
*)
    echo "usage: ./run.sh [demo|test|build|tsan|asan|fuzz-replay|cross|wine|wine-coverage|package|bench|wine-bench|soak|format-check]" >&2
    exit 2
    ;;
esac

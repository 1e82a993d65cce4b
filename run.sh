#!/usr/bin/env bash
# The way in: ./run.sh demo (the main job), ./run.sh test (the whole test suite).
set -euo pipefail
cd "$(dirname "$0")"
ROOT=$(pwd)
JOBS=$(nproc 2>/dev/null || echo 2)

PACKAGES=(cmake g++ make pkg-config zlib1g-dev libtinyxml-dev libpugixml-dev libboost-program-options-dev
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
        $sudo apt-get update -qq
        DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
    fi
}

configure_and_build() { # build-dir [cmake args...]
    local dir=$1
    shift
    cmake -S "$ROOT" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
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

cmd_tsan() {
    need_packages "${PACKAGES[@]}"
    configure_and_build build-tsan -DMIRRACK_SANITIZE=thread -DMIRRACK_BENCH=OFF
    (cd build-tsan && TSAN_OPTIONS="halt_on_error=1" ctest --output-on-failure -j "$JOBS" --timeout 900)
}

cmd_asan() {
    need_packages "${PACKAGES[@]}"
    configure_and_build build-asan -DMIRRACK_SANITIZE=address -DMIRRACK_BENCH=OFF
    (cd build-asan && ctest --output-on-failure -j "$JOBS" --timeout 900)
}

cmd_cross() {
    need_packages cmake g++-mingw-w64-x86-64 mingw-w64-x86-64-dev dpkg-dev xz-utils
    bash "$ROOT/.ci/cross-windows.sh"
}

cmd_wine() {
    cmd_cross
    need_packages wine wine64
    bash "$ROOT/.ci/wine-tests.sh"
}

cmd_bench() {
    cmd_build
    for b in build/bin/*_bench; do
        [ -x "$b" ] && "$b" --benchmark_min_time=0.2
    done
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
cross) cmd_cross ;;
wine) cmd_wine ;;
bench) cmd_bench ;;
demo) cmd_demo ;;
*)
    echo "usage: ./run.sh [demo|test|build|tsan|asan|cross|wine|bench]" >&2
    exit 2
    ;;
esac

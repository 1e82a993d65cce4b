#!/usr/bin/env bash
# Windows cross-build: the same sources, with the *_win32.cpp files, compiled and linked
# by MinGW-w64, the tool, the client and the test suites (which .ci/wine-tests.sh runs).
# zlib, TinyXML, Boost.Program_options and GoogleTest for MinGW are built from Debian's
# source packages (a deb-src entry, then apt-get source) into the build folder, once.
# MIRRACK_CROSS_BENCH=ON builds the benchmarks too, and Google Benchmark the same way;
# MIRRACK_CROSS_COVERAGE=ON counts the lines run (.ci/wine-coverage.sh).
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OUT=${MIRRACK_CROSS_DIR:-$ROOT/build-win}
DEPS=$OUT/deps
SRC=$OUT/src
JOBS=$(nproc 2>/dev/null || echo 2)
CXX=x86_64-w64-mingw32-g++-posix
CC=x86_64-w64-mingw32-gcc-posix
AR=x86_64-w64-mingw32-ar

# The deb-src entries mirror the machine's own deb sources (deb822 stanzas and one-line
# entries), so that no archive address is written here and a configured mirror or snapshot
# serves the source packages too.
deb822_src_stanzas() {
    awk 'BEGIN { RS = ""; ORS = "\n\n" }
         { n = split($0, lines, "\n"); keep = 0
           for (i = 1; i <= n; i++)
               if (lines[i] ~ /^Types:/ && (" " substr(lines[i], 7) " ") ~ /[ \t]deb[ \t]/) keep = 1
           if (!keep) next
           out = ""
           for (i = 1; i <= n; i++) out = out (lines[i] ~ /^Types:/ ? "Types: deb-src" : lines[i]) "\n"
           printf "%s\n", out }' "$@"
}

one_line_src_entries() {
    sed -n 's/^[[:space:]]*deb\([[:space:]]\)/deb-src\1/p' "$@"
}

add_source_entries() { # file entries
    [ -n "$2" ] || return 0
    local sudo=""
    [ "$(id -u)" = 0 ] || sudo="sudo"
    $sudo tee "$1" >/dev/null <<<"$2"
}

ensure_deb_src() {
    if grep -rqsE '^Types:.*deb-src' /etc/apt/sources.list.d/ ||
        grep -rqs '^[[:space:]]*deb-src' /etc/apt/sources.list /etc/apt/sources.list.d/; then
        return
    fi
    local stanzas lines
    stanzas=$(deb822_src_stanzas /dev/null /etc/apt/sources.list.d/*.sources 2>/dev/null || true)
    lines=$(one_line_src_entries /dev/null /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null || true)
    if [ -z "$stanzas$lines" ]; then
        echo "No deb source is configured on this machine to derive a deb-src entry from." >&2
        exit 1
    fi
    add_source_entries /etc/apt/sources.list.d/mirrack-src.sources "$stanzas"
    add_source_entries /etc/apt/sources.list.d/mirrack-src.list "$lines"
    local sudo=""
    [ "$(id -u)" = 0 ] || sudo="sudo"
    $sudo apt-get -o DPkg::Lock::Timeout=900 update -qq
}

LIBRARIES=(zlib tinyxml boost_program_options googletest)
SOURCE_PACKAGES=(zlib tinyxml boost1.74 googletest)
BENCH=${MIRRACK_CROSS_BENCH:-OFF}
if [ "$BENCH" = ON ]; then
    LIBRARIES+=(benchmark)
    SOURCE_PACKAGES+=(benchmark)
fi

# The missing ones together, in one call.
fetch_sources() {
    mkdir -p "$SRC"
    cd "$SRC"
    local missing=()
    for package in "${SOURCE_PACKAGES[@]}"; do
        ls "${package}"_*.dsc >/dev/null 2>&1 || missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    ensure_deb_src
    apt-get source --download-only "${missing[@]}" >/dev/null
}

build_zlib() {
    cd "$SRC"
    rm -rf zlib && mkdir zlib
    tar -xf zlib_*.orig.tar.* -C zlib --strip-components=1
    cd zlib
    local objs=()
    for f in adler32 compress crc32 deflate gzclose gzlib gzread gzwrite infback inffast inflate inftrees \
        trees uncompr zutil; do
        "$CC" -O2 -c $f.c -o $f.o
        objs+=($f.o)
    done
    "$AR" rcs libz.a "${objs[@]}"
    mkdir -p "$DEPS/include" "$DEPS/lib"
    cp zlib.h zconf.h "$DEPS/include/"
    cp libz.a "$DEPS/lib/"
}

build_tinyxml() {
    cd "$SRC"
    rm -rf tinyxml && mkdir tinyxml
    tar -xf tinyxml_*.orig.tar.* -C tinyxml --strip-components=1
    cd tinyxml
    for f in tinyxml tinystr tinyxmlerror tinyxmlparser; do
        "$CXX" -O2 -DTIXML_USE_STL -c $f.cpp -o $f.o
    done
    "$AR" rcs libtinyxml.a tinyxml.o tinystr.o tinyxmlerror.o tinyxmlparser.o
    cp tinyxml.h tinystr.h "$DEPS/include/"
    cp libtinyxml.a "$DEPS/lib/"
}

build_boost_program_options() {
    cd "$SRC"
    rm -rf boost && mkdir boost
    # The source tree is modular: every library keeps its headers in libs/<name>/include.
    tar -xf boost1.74_*.orig.tar.* -C boost --strip-components=1 --wildcards '*/include/boost/*' \
        '*/libs/program_options/src/*'
    rm -rf "$DEPS/include/boost"
    mkdir -p "$DEPS/include/boost"
    find boost/libs -type d -path '*/include/boost' -prune | while read -r d; do
        cp -r "$d/." "$DEPS/include/boost/"
    done
    cd boost/libs/program_options/src
    local objs=()
    for f in *.cpp; do
        "$CXX" -O2 -std=c++17 -DBOOST_PROGRAM_OPTIONS_NO_LIB -I"$DEPS/include" -c "$f" -o "${f%.cpp}.o" &
        objs+=("${f%.cpp}.o")
        while (($(jobs -r | wc -l) >= JOBS)); do wait -n; done
    done
    wait
    "$AR" rcs libboost_program_options.a "${objs[@]}"
    cp libboost_program_options.a "$DEPS/lib/"
}

build_googletest() {
    cd "$SRC"
    rm -rf googletest && mkdir googletest
    tar -xf googletest_*.orig.tar.* -C googletest --strip-components=1
    cd googletest/googletest
    "$CXX" -O2 -std=c++17 -Iinclude -I. -c src/gtest-all.cc -o gtest-all.o &
    "$CXX" -O2 -std=c++17 -Iinclude -I. -c src/gtest_main.cc -o gtest_main.o
    wait
    "$AR" rcs libgtest.a gtest-all.o
    "$AR" rcs libgtest_main.a gtest_main.o
    rm -rf "$DEPS/include/gtest"
    cp -r include/gtest "$DEPS/include/"
    cp libgtest.a libgtest_main.a "$DEPS/lib/"
}

# The library alone, without its main: the benchmarks have one of their own. Debian's patches
# touch its packaging, its own tests and other platforms, nothing built here.
build_benchmark() {
    cd "$SRC"
    rm -rf benchmark && mkdir benchmark
    tar -xf benchmark_*.orig.tar.* -C benchmark --strip-components=1
    cd benchmark
    local objs=()
    for f in src/*.cc; do
        [ "$f" = src/benchmark_main.cc ] && continue
        "$CXX" -O2 -std=c++17 -DNDEBUG -DHAVE_STD_REGEX -DHAVE_STEADY_CLOCK -DBENCHMARK_STATIC_DEFINE \
            -Iinclude -c "$f" -o "${f%.cc}.o" &
        objs+=("${f%.cc}.o")
        while (($(jobs -r | wc -l) >= JOBS)); do wait -n; done
    done
    wait
    "$AR" rcs libbenchmark.a "${objs[@]}"
    rm -rf "$DEPS/include/benchmark"
    cp -r include/benchmark "$DEPS/include/"
    cp libbenchmark.a "$DEPS/lib/"
}

# Each library is built once into the build folder; a marker per library keeps a folder made
# before a library was added.
for lib in "${LIBRARIES[@]}"; do
    if [ ! -f "$DEPS/.built-$lib" ]; then
        echo "Building $lib for MinGW-w64 from its Debian source package"
        fetch_sources
        mkdir -p "$DEPS/include" "$DEPS/lib"
        "build_$lib"
        touch "$DEPS/.built-$lib"
    fi
done

# ctest runs the cross-built tests under Wine (.ci/wine-tests.sh prepares its prefix).
cmake -S "$ROOT" -B "$OUT/build" -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64.cmake" \
    -DMIRRACK_DEPS_PREFIX="$DEPS" -DMIRRACK_BENCH="$BENCH" -DMIRRACK_TESTS="${MIRRACK_CROSS_TESTS:-ON}" \
    -DMIRRACK_COVERAGE="${MIRRACK_CROSS_COVERAGE:-OFF}" -DMIRRACK_WERROR="${MIRRACK_WERROR:-OFF}" \
    -DCMAKE_UNITY_BUILD="${MIRRACK_UNITY:-OFF}" -DCMAKE_UNITY_BUILD_BATCH_SIZE=16 \
    -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CROSSCOMPILING_EMULATOR=wine >/dev/null
cmake --build "$OUT/build" -j "$JOBS"
echo "Windows cross-build: OK."
echo "The tool and its client:"
ls -1 "$OUT/build/bin/mirrack.exe"
ls -1 "$OUT/build/bin/mirrack-client.exe"
echo "The test suites (./run.sh wine runs them under Wine):"
ls -1 "$OUT"/build/bin/test_*.exe

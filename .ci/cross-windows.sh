#!/usr/bin/env bash
# Windows cross-build check: the same sources, with the *_win32.cpp files, compiled
# and linked by MinGW-w64. zlib, TinyXML and Boost.Program_options for MinGW are
# built from Debian's source packages (a deb-src entry, then apt-get source).
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OUT=${MIRRACK_CROSS_DIR:-$ROOT/build-win}
DEPS=$OUT/deps
SRC=$OUT/src
JOBS=$(nproc 2>/dev/null || echo 2)
CXX=x86_64-w64-mingw32-g++-posix
CC=x86_64-w64-mingw32-gcc-posix
AR=x86_64-w64-mingw32-ar

ensure_deb_src() {
    if ! grep -rqs '^Types: *deb-src' /etc/apt/sources.list.d/ && ! grep -qs '^deb-src' /etc/apt/sources.list; then
        local sudo=""
        [ "$(id -u)" = 0 ] || sudo="sudo"
        $sudo tee /etc/apt/sources.list.d/mirrack-src.sources >/dev/null <<SRC
Types: deb-src
URIs: http://deb.debian.org/debian
Suites: $(. /etc/os-release && echo "$VERSION_CODENAME")
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
SRC
        $sudo apt-get update -qq
    fi
}

fetch_sources() {
    mkdir -p "$SRC"
    cd "$SRC"
    ls zlib_*.dsc tinyxml_*.dsc boost1.74_*.dsc >/dev/null 2>&1 && return
    ensure_deb_src
    apt-get source --download-only zlib tinyxml boost1.74 >/dev/null
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

if [ ! -f "$DEPS/.built" ]; then
    echo "Building zlib, TinyXML and Boost.Program_options for MinGW-w64 from Debian sources"
    fetch_sources
    build_zlib
    build_tinyxml
    build_boost_program_options
    touch "$DEPS/.built"
fi

cmake -S "$ROOT" -B "$OUT/build" -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64.cmake" \
    -DMIRRACK_DEPS_PREFIX="$DEPS" -DMIRRACK_BENCH=OFF -DMIRRACK_TESTS=OFF -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$OUT/build" -j "$JOBS"
echo "Windows cross-build: OK"
ls "$OUT/build/bin" 2>/dev/null || true

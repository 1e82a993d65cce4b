#!/usr/bin/env bash
# The Windows build's test suites under Wine, the tool's end-to-end smoke among them.
# Expects the cross-build of .ci/cross-windows.sh; installs Wine when it is missing. The Wine
# prefix lives in the build folder and is made once; no display is needed.
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OUT=${MIRRACK_CROSS_DIR:-$ROOT/build-win}
JOBS=$(nproc 2>/dev/null || echo 2)

if ! command -v wine >/dev/null || ! command -v wineserver >/dev/null; then
    sudo=""
    [ "$(id -u)" = 0 ] || sudo="sudo"
    echo "Installing Wine"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq wine wine64 >/dev/null
fi

export WINEPREFIX="$OUT/wine-prefix" WINEDEBUG=-all WINEARCH=win64
# No Mono or Gecko installer: nothing here needs them, and they would ask on a display.
export WINEDLLOVERRIDES="mscoree=;mshtml="
unset DISPLAY WAYLAND_DISPLAY
trap 'wineserver -k 2>/dev/null || true' EXIT

if [ ! -f "$WINEPREFIX/system.reg" ]; then
    echo "Making the Wine prefix $WINEPREFIX"
    timeout 300 wineboot --init
    timeout 120 wineserver -w
fi
# One server for the whole run, so that each test executable does not start its own; the trap
# above shuts it down.
wineserver -p
# Wine's own services start with the first program of a server and inherit its output: started
# here, they keep no pipe of ctest open, which would hold that test until the services end.
timeout 120 wineboot </dev/null >/dev/null 2>&1

cd "$OUT/build"
# A hung executable fails after its ctest time-out; the whole run has a limit of its own.
timeout 1800 ctest --output-on-failure -j "$JOBS" --timeout 300

#!/usr/bin/env bash
# The Windows build's test suites under Wine, the tool's end-to-end smoke among them.
# Expects the cross-build of .ci/cross-windows.sh; installs Wine when it is missing. The Wine
# prefix lives in the build folder and is made once; no display is needed.
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OUT=${MIRRACK_CROSS_DIR:-$ROOT/build-win}
JOBS=$(nproc 2>/dev/null || echo 2)
source "$ROOT/.ci/wine.sh"

wine_install
wine_start "$OUT/wine-prefix"

cd "$OUT/build"
# A hung executable fails after its ctest time-out; the whole run has a limit of its own.
timeout 1800 ctest --output-on-failure -j "$JOBS" --timeout 300

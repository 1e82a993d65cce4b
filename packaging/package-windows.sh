#!/usr/bin/env bash
# The Windows bundle: build-win/mirrack-VERSION-win64.zip with both executables of the cross-build,
# README-Windows.txt, the licence and SHA256SUMS, in one folder of that name. Expects the
# cross-build of .ci/cross-windows.sh; ends by checking the bundle it made.
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OUT=${MIRRACK_CROSS_DIR:-$ROOT/build-win}
# The project's one version, the one the executables' resources carry.
VERSION=$(sed -n 's/^project(Mirrack VERSION \([0-9.]*\).*/\1/p' "$ROOT/CMakeLists.txt")
NAME=mirrack-$VERSION-win64
STAGE=$OUT/package/$NAME
ZIP=$OUT/$NAME.zip

# Text files in Windows' line ends, for Notepad.
crlf() { sed 's/\r\{0,1\}$/\r/' "$1"; }

rm -rf "$OUT/package" "$ZIP"
mkdir -p "$STAGE"
cp "$OUT/build/bin/mirrack.exe" "$OUT/build/bin/mirrack-client.exe" "$STAGE/"
x86_64-w64-mingw32-strip "$STAGE"/*.exe
crlf "$ROOT/packaging/README-Windows.txt" | sed "s/@VERSION@/$VERSION/" >"$STAGE/README-Windows.txt"
crlf "$ROOT/LICENSE" >"$STAGE/LICENSE.txt"
(cd "$STAGE" && sha256sum mirrack.exe mirrack-client.exe README-Windows.txt LICENSE.txt >SHA256SUMS)
# No extra attributes and the files' own order, so that the listing is the same on every machine.
(cd "$OUT/package" && zip -q -X -r "$ZIP" "$NAME")
rm -rf "$OUT/package"
echo "Windows bundle: $ZIP"
bash "$ROOT/tests/package/check_bundle.sh" "$ZIP"

#!/usr/bin/env bash
# The Windows build's test suites under Wine with line counts (MinGW's gcov), in a build folder of
# its own, then the share of lines run in every *_win32.cpp file and, under that table, the lines
# that Wine cannot reach and why. Exits with the suites' status once the table is printed.
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OUT=${MIRRACK_CROSS_DIR:-$ROOT/build-win-cov}
PLAIN=$ROOT/build-win
JOBS=$(nproc 2>/dev/null || echo 2)
GCOV=x86_64-w64-mingw32-gcov
source "$ROOT/.ci/wine.sh"

# The MinGW libraries do not change with the counting: those of the plain cross-build serve.
mkdir -p "$OUT"
for part in deps src; do
    if [ ! -e "$OUT/$part" ] && [ -d "$PLAIN/$part" ]; then
        ln -s "$PLAIN/$part" "$OUT/$part"
    fi
done
MIRRACK_CROSS_DIR=$OUT MIRRACK_CROSS_COVERAGE=ON bash "$ROOT/.ci/cross-windows.sh" >/dev/null

wine_install
wine_start "$OUT/wine-prefix"
cd "$OUT/build"
find . -name '*.gcda' -delete
# The counts go to the object folders' Unix paths, whichever drive a test's working folder is on.
export GCOV_PREFIX=Z:
status=0
timeout 1800 ctest --output-on-failure -j "$JOBS" --timeout 300 || status=$?

# One row per file: its counts are in the notes (.gcno) and data (.gcda) beside its object.
# gcov names the source as the compiler was given it: absolute, or relative where the compiler
# cache's base folder made it so.
lines_run() { # source relative to the root
    local notes
    notes=$(find "$OUT/build" -path "*/$1.gcno" | head -n 1)
    [ -n "$notes" ] || return 0
    (cd "$OUT/build" && "$GCOV" -n "$notes" 2>/dev/null) |
        awk -v file="/$1'" '/^File / { hit = substr($0, length($0) - length(file) + 1) == file; next }
                            hit && /^Lines executed:/ { sub(/^Lines executed:/, ""); print; exit }'
}

echo
printf '%-48s %s\n' "file" "lines run"
while read -r source; do
    counts=$(lines_run "$source")
    printf '%-48s %s\n' "$source" "${counts:-not built}"
done < <(cd "$ROOT" && find . -name '*_win32.cpp' -not -path './build*' -not -path './bench/*' | sed 's|^\./||' | sort)
echo
cat "$ROOT/.ci/wine-coverage-limits.txt"
exit "$status"

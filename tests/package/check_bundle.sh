#!/usr/bin/env bash
# Unpacks a Windows bundle and checks it: exactly the expected files in one folder named after
# the zip, the checksums right, the executables Windows programs carrying the project's version,
# the text files in Windows' line ends.
set -uo pipefail
ZIP=$1
NAME=$(basename "$ZIP" .zip)
VERSION=${NAME#mirrack-}
VERSION=${VERSION%-win64}
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
passed=0
failed=0
check() { # description command...
    local what=$1
    shift
    if "$@" >/dev/null 2>&1; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "FAILED: $what"
    fi
}

expected=$(printf '%s\n' "$NAME/" "$NAME/LICENSE.txt" "$NAME/README-Windows.txt" "$NAME/SHA256SUMS" \
    "$NAME/mirrack-client.exe" "$NAME/mirrack.exe")
listing=$(unzip -Z1 "$ZIP" | sort)
check "the listing is the folder and its five files" test "$listing" = "$expected"
check "the bundle unpacks" unzip -q "$ZIP" -d "$WORK"
check "every checksum matches" bash -c "cd '$WORK/$NAME' && sha256sum --strict -c SHA256SUMS"
check "the checksums cover the four other files" test "$(wc -l <"$WORK/$NAME/SHA256SUMS")" = 4
for exe in mirrack.exe mirrack-client.exe; do
    check "$exe is a Windows program" bash -c "head -c 2 '$WORK/$NAME/$exe' | grep -q MZ"
    # The version resource holds its strings in UTF-16: without the zero bytes, name and value meet.
    check "$exe carries the version $VERSION" bash -c "tr -d '\\000' <'$WORK/$NAME/$exe' | grep -aqF 'ProductVersion$VERSION'"
done
check "README-Windows.txt names the version" grep -q "Mirrack $VERSION for 64-bit Windows" "$WORK/$NAME/README-Windows.txt"
check "README-Windows.txt has Windows line ends" grep -q $'\r$' "$WORK/$NAME/README-Windows.txt"
check "LICENSE.txt is the MIT licence" grep -q "^MIT License" "$WORK/$NAME/LICENSE.txt"
echo "bundle: $passed passed, $failed failed"
((failed == 0))

# shellcheck shell=bash
# Wine for the cross-built executables, sourced by .ci/wine-tests.sh and bench/wine_server_bench.sh.
# The Wine prefix lives in the build folder and is made once; no display is needed.

# Installs Debian's Wine when it is missing.
wine_install() {
    if ! command -v wine >/dev/null || ! command -v wineserver >/dev/null; then
        local sudo=""
        [ "$(id -u)" = 0 ] || sudo="sudo"
        echo "Installing Wine"
        $sudo apt-get -o DPkg::Lock::Timeout=900 update -qq
        DEBIAN_FRONTEND=noninteractive $sudo apt-get -o DPkg::Lock::Timeout=900 install -y -qq wine wine64 >/dev/null
    fi
}

# Makes the prefix when it is not there yet and starts one Wine server with its services for the
# rest of the calling script, which shuts it down when that script ends.
wine_start() { # prefix
    export WINEPREFIX="$1" WINEDEBUG=-all WINEARCH=win64
    # No Mono or Gecko installer: nothing here needs them, and they would ask on a display.
    export WINEDLLOVERRIDES="mscoree=;mshtml="
    unset DISPLAY WAYLAND_DISPLAY
    trap 'wineserver -k 2>/dev/null || true' EXIT

    if [ ! -f "$WINEPREFIX/system.reg" ]; then
        echo "Making the Wine prefix $WINEPREFIX"
        timeout 300 wineboot --init
        timeout 120 wineserver -w
    fi
    # One server for the whole run, so that each executable does not start its own; the trap
    # above shuts it down.
    wineserver -p
    # Wine's own services start with the first program of a server and inherit its output: started
    # here, they keep no pipe of the caller's open, which would hold it until the services end.
    timeout 120 wineboot </dev/null >/dev/null 2>&1
}

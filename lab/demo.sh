#!/usr/bin/env bash
# The demo: Mirrack on a simulated Hyper-V host, driven the way a backup server
# drives it. Needs no network and no argument; the binaries' folder may be given.
#
# Each section is a function named in SECTIONS: it makes what it needs under its
# own folder of $WORK, starts the tools it needs with start_tool, and waits for
# them with wait_tool, so that nothing is left running when it returns.
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/.." && pwd)
BIN=$(cd "${1:-$ROOT/build/bin}" && pwd)
WORK=$(mktemp -d "${TMPDIR:-/tmp}/mirrack-demo.XXXXXX")
export MIRRACK_PIPE_DIR="$WORK/pipes"
SECTIONS=(onhost_backup offhost_backup)
TOOL_PIDS=()
STATUS=0

for exe in mirrack mirrack-client mirrack-lab; do
    [ -x "$BIN/$exe" ] || { echo "demo: $BIN/$exe is not built." >&2; exit 1; }
done

stop_tools() {
    local pid
    for pid in "${TOOL_PIDS[@]}"; do
        if kill -0 "$pid" 2>/dev/null; then
            kill "$pid" 2>/dev/null || true
            wait "$pid" 2>/dev/null || true
        fi
    done
    if [ "${MIRRACK_DEMO_KEEP:-0}" = 1 ]; then
        echo "Everything the demo made is in $WORK"
    else
        rm -rf "$WORK"
    fi
}
trap stop_tools EXIT
trap 'exit 130' INT TERM

heading() {
    echo
    echo "== $* =="
}

# start_tool HOST_DIR PIPE_NAME: mirrack in pipe mode on that host, its log in the
# host's folder; the process id is left in TOOL_PID.
start_tool() {
    local host=$1 name=$2
    MIRRACK_HOST="$host" "$BIN/mirrack" -p -n "$name" -o Mirrack.log -log "$host/../Mirrack.log" \
        >"$host/../mirrack.out" 2>&1 &
    TOOL_PID=$!
    TOOL_PIDS+=("$TOOL_PID")
    echo "Started mirrack (pid $TOOL_PID) on the pipe $name."
}

# wait_tool PID: the tool ends once its client has disconnected; one that doesn't
# within ten seconds is stopped.
wait_tool() {
    local pid=$1 tries=100 status=0
    while kill -0 "$pid" 2>/dev/null && ((tries-- > 0)); do
        sleep 0.1
    done
    if kill -0 "$pid" 2>/dev/null; then
        echo "mirrack (pid $pid) did not end after its client left; stopping it."
        kill "$pid" 2>/dev/null || true
    fi
    wait "$pid" 2>/dev/null || status=$?
    echo "mirrack (pid $pid) ended with exit code $status."
}

# The id of the n-th VM of a backup specification.
spec_vm_id() {
    grep -o '<VM id="[^"]*"' "$1" | sed -n "$2p" | cut -d'"' -f2
}

onhost_backup() {
    local dir="$WORK/onhost" host="$WORK/onhost/host"
    mkdir -p "$dir"
    heading "A sample Hyper-V host"
    "$BIN/mirrack-lab" create "$host"
    echo "VMs of its backup specification (spec.xml):"
    grep -o '<VM id="[^"]*"' "$host/spec.xml" | cut -d'"' -f2 | sed 's/^/  /'

    heading "On-host backup"
    local failed
    failed=$(spec_vm_id "$host/spec.xml" 3)
    echo "The backup server reports the VM $failed as failed on purpose: each VM's result goes to the writer."
    start_tool "$host" demo-host
    local rc=0
    MIRRACK_HOST="$host" "$BIN/mirrack-client" --pipe demo-host backup --spec "$host/spec.xml" \
        --to "$dir/backup" --fail-vm "$failed" --job "Demo job" --console "demo-server" || rc=$?
    wait_tool "$TOOL_PID"
    [ "$rc" = 0 ] || { echo "The backup ended with exit code $rc."; STATUS=1; }

    heading "What the backup server received"
    local first
    first=$(spec_vm_id "$host/spec.xml" 1)
    (cd "$dir/backup" && find "$first" -type f | sort | while read -r file; do
        printf '  %10s  %s\n' "$(stat -c %s "$file")" "$file"
    done)
    echo "  ... and $(find "$dir/backup" -type f | wc -l) files in all, under $(find "$dir/backup" -mindepth 1 -maxdepth 1 -type d | wc -l) VM folders."

    heading "The host afterwards"
    "$BIN/mirrack-lab" state "$host" | tee "$dir/state.txt"
    if grep -q "^Cluster shared volumes in backup: 0" "$dir/state.txt"; then
        echo "(No cluster shared volume is left in backup: its backup state ended with the job, as the cluster ends it.)"
    fi

    heading "The tool's log, in short"
    grep -E "Starting VSS backup|VSS backup is started|Creating snapshot set|VSI: Set VM backup status: .* ok\.|Releasing snapshot|Process will be finished" \
        "$dir/Mirrack.log" | cut -c1-160 || true
}

offhost_backup() {
    # Each tool keeps its log beside its host's folder, so each host has a folder of its own.
    local dir="$WORK/offhost" host="$WORK/offhost/host-tool/host" proxy="$WORK/offhost/proxy-tool/proxy"
    mkdir -p "$dir"
    heading "Off-host backup: a Hyper-V host and its backup proxy"
    "$BIN/mirrack-lab" create "$host"
    "$BIN/mirrack-lab" create "$proxy" --proxy
    echo "The host makes a transportable snapshot (spec-offhost.xml); the proxy imports it and the files are read there."
    start_tool "$host" demo-offhost-host
    local host_pid=$TOOL_PID
    start_tool "$proxy" demo-offhost-proxy
    local proxy_pid=$TOOL_PID
    local rc=0
    # The backup server reads the files on the proxy: the client sees the proxy's host.
    MIRRACK_HOST="$proxy" "$BIN/mirrack-client" offhost --host-pipe demo-offhost-host \
        --proxy-pipe demo-offhost-proxy --spec "$host/spec-offhost.xml" --to "$dir/backup" \
        --job "Demo off-host job" --console "demo-server" || rc=$?
    wait_tool "$proxy_pid"
    wait_tool "$host_pid"
    [ "$rc" = 0 ] || { echo "The off-host backup ended with exit code $rc."; STATUS=1; }

    heading "What the backup server received from the proxy"
    echo "  $(find "$dir/backup" -type f | wc -l) files under $(find "$dir/backup" -mindepth 1 -maxdepth 1 -type d | wc -l) VM folders."

    heading "Both hosts afterwards"
    "$BIN/mirrack-lab" state "$host" | grep -v "^  C:" || true
    "$BIN/mirrack-lab" state "$proxy"

    heading "The proxy tool's log, in short"
    grep -E "Starting import of the off-host snapshot|Starting snapshot import|Mount point for volume|Snapshot import task was successfully created|Paths were successfully converted|Leaving snapshot import procedure" \
        "$dir/proxy-tool/Mirrack.log" | awk '!seen[substr($0, index($0, "|"))]++' | cut -c1-200 || true
}

for section in "${SECTIONS[@]}"; do
    "$section"
done
exit "$STATUS"

#!/usr/bin/env bash
# opens.sh <program> [arguments]: passes when the program shows a window and runs until it is told to end.
set -euo pipefail

"$@" &
program=$!
trap 'kill "$program" 2>/dev/null || true' EXIT
timeout 60 xdotool search --sync --onlyvisible --pid "$program" >/dev/null
kill -TERM "$program"
status=0
wait "$program" || status=$?
[ "$status" -eq $((128 + 15)) ] # SIGTERM, and not one of its own

#!/usr/bin/env bash
# opens.sh <program> [arguments]: passes when the program shows a window and runs until it is told to end.
set -euo pipefail

"$@" &
program=$!
trap 'kill "$program" 2>/dev/null || true' EXIT
# Asked again and again: windows that come and go while it looks are an error to xdotool.
end=$((SECONDS + 60))
until xdotool search --onlyvisible --pid "$program" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ]
    kill -0 "$program" # it may have ended by itself
    sleep 0.1
done
kill -TERM "$program"
status=0
wait "$program" || status=$?
[ "$status" -eq $((128 + 15)) ] # SIGTERM, and not one of its own

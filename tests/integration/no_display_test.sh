#!/usr/bin/env bash
# Without a display SDL cannot start: the failure reaches main's handler, which reports it
# on stderr and in the log (the popup cannot show) and ends with code 1.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
make_work_directory "$exe" "$data"
env -u DISPLAY -u WAYLAND_DISPLAY SDL_VIDEODRIVER=x11 "$work/vorra" >"$work/stdout" 2>"$work/stderr"
rc=$?
[ "$rc" -eq 1 ] || fail "exit code $rc, expected 1"
expect_text "$work/stderr" "Exception caught: Couldn't init SDL: "
expect_text "$work/Logfile.txt" "!! ERROR: Exception caught in main: Couldn't init SDL: "
expect_text "$work/Logfile.txt" "Exception thrown: Couldn't init SDL: "
echo "PASS"

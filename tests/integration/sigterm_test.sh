#!/usr/bin/env bash
# Starts the real program under X, lets it run frames, ends it with SIGTERM and checks
# that it went through the normal exit. With --no-icon the icon is missing first, which
# must only cost a warning.
exe=$1 data=$2 mode=${3:-}
source "$(dirname "$0")/common.sh"
if [ -z "${DISPLAY:-}" ]; then
  exec xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$@"
fi
make_work_directory "$exe" "$data"
[ "$mode" = "--no-icon" ] && rm -f "$work/Vorra.bmp"

"$work/vorra" >"$work/stdout" 2>"$work/stderr" &
pid=$!
for _ in $(seq 1 300); do
  grep -qs "Entering game loop" "$work/Logfile.txt" && break
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.1
done
expect_text "$work/Logfile.txt" "Entering game loop"
sleep 1  # let it run frames
kill -0 "$pid" 2>/dev/null || fail "the program ended before it was asked to"
kill -TERM "$pid"
wait "$pid"
rc=$?
[ "$rc" -eq 0 ] || fail "exit code $rc, expected 0"

expect_text "$work/Logfile.txt" "  Vorra beta 4.13"
expect_text "$work/Logfile.txt" "Window created."
expect_text "$work/Logfile.txt" "Returning 0 from main"
expect_text "$work/stdout" "workdir =  $work/"
if [ "$mode" = "--no-icon" ]; then
  expect_text "$work/Logfile.txt" "-- Warning: Couldn't load the window icon"
else
  grep -q "Warning\|ERROR" "$work/Logfile.txt" && fail "unexpected warning or error in the log"
fi
echo "PASS"

#!/usr/bin/env bash
# Starts the real program under X, lets it run frames, ends it with SIGTERM and checks
# that it went through the normal exit. With --no-icon the icon is missing first, and with
# --unwritable-log the log file cannot be opened, and with --no-glx-display SHIM GLX
# reports no current display for the fresh context: each must only cost itself.
exe=$1 data=$2 mode=${3:-}
source "$(dirname "$0")/common.sh"
need_display "$@"
make_work_directory "$exe" "$data"
[ "$mode" = "--no-icon" ] && rm -f "$work/Vorra.bmp"
[ "$mode" = "--unwritable-log" ] && mkdir "$work/Logfile.txt"
log="$work/Logfile.txt"
[ "$mode" = "--unwritable-log" ] && log="$work/stdout"  # Info lines still reach stdout

if [ "$mode" = "--no-glx-display" ]; then
  LD_PRELOAD=$4 run_and_terminate "$log"
else
  run_and_terminate "$log"
fi
[ "$rc" -eq 0 ] || fail "exit code $rc, expected 0"

expect_text "$work/stdout" "workdir =  $work/"
expect_text "$log" "Window created."
if [ "$mode" = "--unwritable-log" ]; then
  echo "PASS"
  exit 0
fi
expect_text "$work/Logfile.txt" "  Vorra beta 4.13"
expect_text "$work/Logfile.txt" "Entering game loop"
expect_text "$work/Logfile.txt" "Returning 0 from main"
if [ "$mode" = "--no-icon" ]; then
  expect_text "$work/Logfile.txt" "-- Warning: Couldn't load the window icon"
else
  grep -q "Warning\|ERROR" "$work/Logfile.txt" && fail "unexpected warning or error in the log"
fi
echo "PASS"

# Shared by the program tests: a private work directory holding a copy of the program and
# its data tree, since the work directory is the folder of the executable.
set -u

fail() {
  echo "FAIL: $*" >&2
  for f in "$work"/Logfile.txt "$work"/stdout "$work"/stderr; do
    [ -f "$f" ] && { echo "--- $f" >&2; tail -n 40 "$f" >&2; }
  done
  exit 1
}

make_work_directory() {
  local exe=$1 data=$2
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  cp -r "$data"/. "$work"/
  cp "$exe" "$work/vorra"
}

# Fails unless the file holds the exact text.
expect_text() {
  grep -qF -- "$2" "$1" || fail "\"$2\" not found in $1"
}

# Starts the program and waits until its loop runs (the line "Running program..." in the
# given log); sets pid.
start_program() {
  local log=$1
  shift
  "$work/vorra" "$@" >"$work/stdout" 2>"$work/stderr" &
  pid=$!
  for _ in $(seq 1 300); do
    grep -qs "Running program..." "$log" && break
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  expect_text "$log" "Running program..."
}

# Ends the started program with SIGTERM and sets rc to its exit code.
terminate_program() {
  kill -0 "$pid" 2>/dev/null || fail "the program ended before it was asked to"
  kill -TERM "$pid"
  wait "$pid"
  rc=$?
}

# Starts the program, lets it run frames, ends it with SIGTERM and sets rc.
run_and_terminate() {
  start_program "$@"
  sleep 1
  terminate_program
}

# Puts the pointer into the program's window, so that its keys reach the program. The
# window stands in the middle of the screen.
point_into_window() {
  local window
  window=$(xdotool search --name Vorra | head -n 1)
  [ -n "$window" ] || fail "no window named Vorra"
  xdotool mousemove --window "$window" 100 100
  sleep 0.2
}

# Runs the rest of the calling script under a virtual X server if there is no display.
need_display() {
  if [ -z "${DISPLAY:-}" ]; then
    exec xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$@"
  fi
}

# Runs the rest of the calling script under a virtual X server of its own, even where a
# display exists: xdotool then drives only this program.
need_own_display() {
  if [ -z "${VORRA_OWN_DISPLAY:-}" ]; then
    VORRA_OWN_DISPLAY=1 exec xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$@"
  fi
}

# The byte at an offset of a file, as a number.
byte_at() {
  od -An -tu1 -j "$2" -N1 "$1" | tr -d ' '
}

# Whether two numbers differ by at most the tolerance (1 if not given).
near() {
  local tolerance=${3:-1}
  [ $(($1 - $2)) -le "$tolerance" ] && [ $(($2 - $1)) -le "$tolerance" ]
}

# The colour at a point of a 24-bit TGA screenshot (the point counted from the window's
# top-left corner), as "red green blue".
pixel_at() {
  local shot=$1 x=$2 y=$3 width height row offset
  width=$(($(byte_at "$shot" 12) + 256 * $(byte_at "$shot" 13)))
  height=$(($(byte_at "$shot" 14) + 256 * $(byte_at "$shot" 15)))
  # Rows run from the bottom up unless the descriptor says otherwise.
  row=$((height - 1 - y))
  [ $(($(byte_at "$shot" 17) & 32)) -ne 0 ] && row=$y
  offset=$((18 + (row * width + x) * 3))
  echo "$(byte_at "$shot" $((offset + 2))) $(byte_at "$shot" $((offset + 1))) $(byte_at "$shot" "$offset")"
}

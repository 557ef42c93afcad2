#!/usr/bin/env bash
# A user's session with the real program, by mouse and keyboard: a closed outline becomes a
# polygon, a small circle on it a hinge, space runs it and it swings down, Ctrl+Z takes the
# run back, a line through it erases it, and Ctrl+S with a typed name saves a file that
# loads. Each stage is saved under a name of its own and read back.
exe=$1 data=$2 shell=$3
source "$(dirname "$0")/common.sh"
need_own_display "$@"
command -v xdotool >/dev/null || fail "xdotool is missing"
make_work_directory "$exe" "$data"
log="$work/Logfile.txt"
scenes="$work/scenes"

cat >"$work/config.cfg" <<'CFG'
System.resolution = [800, 600];
CFG
# An empty, paused scene, the view 150 pixels a unit with the origin in the window's middle.
printf 'FileInfo.version = 2;\nSim.running = false;\nScene.Camera.pan = [0.0, 0.0];\nScene.Camera.zoom = 150.0;\n' \
  >"$work/empty.vra"

start_program "$log" "$work/empty.vra"
sleep 0.5
window=$(xdotool search --name Vorra | head -n 1)
[ -n "$window" ] || fail "no window named Vorra"

# A stroke through window points given as "x y" pairs, with the left button held.
stroke() {
  xdotool mousemove --window "$window" "$1" "$2" mousedown 1
  shift 2
  while [ $# -gt 1 ]; do
    sleep 0.02
    xdotool mousemove --window "$window" "$1" "$2"
    shift 2
  done
  sleep 0.05
  xdotool mouseup 1
  sleep 0.3
}
# The points of a circle about (cx, cy) of radius r, once round and a little beyond.
circle() {
  awk -v cx="$1" -v cy="$2" -v r="$3" 'BEGIN {
    for (i = 0; i <= 26; i++) { a = i * 6.2831853 / 24; printf "%d %d ", cx + r * cos(a), cy + r * sin(a) } }'
}
# Saves the scene through Ctrl+S and the name typed into the popup.
save_as() {
  xdotool key ctrl+s
  sleep 0.3
  xdotool type --delay 30 "$1"
  xdotool key Return
  for _ in $(seq 1 50); do
    [ -f "$scenes/$1.vra" ] && break
    sleep 0.1
  done
  [ -f "$scenes/$1.vra" ] || fail "Ctrl+S and \"$1\" saved no scenes/$1.vra"
}
count() {
  grep -c "^Scene.add$1(" "$scenes/$2.vra"
}
# The y of the first polygon's position in a saved stage.
polygon_y() {
  grep "^Scene.addPolygon(" "$scenes/$1.vra" | head -n 1 | sed 's/.*[{; ]pos = \[[^,]*, \([^]]*\)\].*/\1/'
}

# shellcheck disable=SC2046
stroke $(circle 400 300 110)
save_as stage1
[ "$(count Polygon stage1)" -eq 1 ] || fail "the closed outline made no polygon"

# A small circle near the polygon's right edge: a hinge, about which it will swing down.
# shellcheck disable=SC2046
stroke $(circle 460 300 30)
save_as stage2
[ "$(count Polygon stage2)" -eq 1 ] || fail "the small circle changed the polygons"
[ "$(count Hinge stage2)" -eq 1 ] || fail "the small circle made no hinge"

xdotool mousemove --window "$window" 700 80
xdotool key space
sleep 1.5
save_as stage3
awk -v a="$(polygon_y stage2)" -v b="$(polygon_y stage3)" 'BEGIN { exit !(b < a - 0.1) }' ||
  fail "the polygon did not swing down while running ($(polygon_y stage2) to $(polygon_y stage3))"

xdotool key ctrl+z
sleep 0.5
save_as stage4
[ "$(polygon_y stage4)" = "$(polygon_y stage2)" ] || fail "Ctrl+Z did not take the run back"
grep -q "^Sim.running = false;" "$scenes/stage4.vra" || fail "the run went on after Ctrl+Z"

# A straight line through the polygon erases it, and the hinge it crosses with it.
stroke 250 300 320 300 400 300 480 300 560 300
save_as stage5
[ "$(count Polygon stage5)" -eq 0 ] || fail "the line did not erase the polygon"

# Each saved stage loads again without a window.
"$shell" --load "$scenes/stage2.vra" --save "$scenes/reloaded.vra" >"$work/loaded" 2>&1 ||
  fail "stage2 did not load"
expect_text "$work/loaded" "Loaded scene $scenes/stage2.vra"
[ "$(count Polygon reloaded)" -eq 1 ] && [ "$(count Hinge reloaded)" -eq 1 ] ||
  fail "stage2 did not load as it was saved"
terminate_program
[ "$rc" -eq 0 ] || fail "exit code $rc"
echo PASS

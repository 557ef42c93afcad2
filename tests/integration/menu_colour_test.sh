#!/usr/bin/env bash
# A user recolours a box through its menu: a right click on it opens the selection's menu,
# its Colour button the colour panel, a red swatch there turns the box red on the screen,
# and Ctrl+Z brings the green back.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
need_own_display "$@"
command -v xdotool >/dev/null || fail "xdotool is missing"
make_work_directory "$exe" "$data"
log="$work/Logfile.txt"

cat >"$work/config.cfg" <<'CFG'
System.resolution = [800, 600];
Background.drawClouds = false;
Keys.bind("f12", { System.screenshot });
CFG
# A green box of 2 by 2 units in the middle of the window, 100 pixels a unit.
cat >"$work/box.vra" <<'SCENE'
FileInfo.version = 2;
Sim.running = false;
Scene.Camera.pan = [0.0, 0.0];
Scene.Camera.zoom = 100.0;
Scene.addBox({position = [0.0, 0.0]; size = [2.0, 2.0]; color = [0.2, 0.6, 0.2, 1.0];});
SCENE

start_program "$log" "$work/box.vra"
sleep 0.5
window=$(xdotool search --name Vorra | head -n 1)
[ -n "$window" ] || fail "no window named Vorra"
shots=0
# Takes a screenshot and sets colour to the box's colour at a point the menus leave free.
look() {
  xdotool mousemove --window "$window" 700 100 key F12
  shots=$((shots + 1))
  local shot
  for _ in $(seq 1 50); do
    shot=$(ls "$work"/screenshots/vorra_*.tga 2>/dev/null | sed -n "${shots}p")
    [ -n "$shot" ] && [ "$(stat -c %s "$shot")" -eq $((18 + 800 * 600 * 3)) ] && break
    sleep 0.1
  done
  [ -n "$shot" ] || fail "screenshot $shots was not written"
  read -r red green blue <<<"$(pixel_at "$shot" 340 240)"
}

look
[ "$green" -gt $((red + 60)) ] || fail "the box is not green at first: $red $green $blue"

# The menu opens with its corner at the mouse; the Colour button and the panel's first
# swatch, red, lie at fixed offsets from there.
xdotool mousemove --window "$window" 400 300 click 3
sleep 0.4
expect_text "$log" "Running program..."
xdotool mousemove --window "$window" 465 469 click 1
sleep 0.4
xdotool mousemove --window "$window" 424 501 click 1
sleep 0.4
xdotool key Escape
sleep 0.2
look
[ "$red" -gt $((green + 60)) ] || fail "the red swatch did not turn the box red: $red $green $blue"

xdotool key ctrl+z
sleep 0.3
look
[ "$green" -gt $((red + 60)) ] || fail "Ctrl+Z did not bring the green back: $red $green $blue"

terminate_program
[ "$rc" -eq 0 ] || fail "exit code $rc"
grep -q "translation missing" "$log" && fail "a text of the menus is missing"
exit 0

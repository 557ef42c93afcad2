#!/usr/bin/env bash
# The console in the real program: F11 opens it over the top of the window, a typed line
# runs when Enter is pressed, and the picture shows the console's dark background over the
# top part of the window and the sky below it.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
need_own_display "$@"
command -v xdotool >/dev/null || fail "xdotool is missing"

# Fails unless the pixel (x, y from the top) of the 1024 by 768 shot is near blue green red.
expect_pixel() {
  local shot=$1 x=$2 y=$3 b=$4 g=$5 r=$6 offset
  offset=$((18 + ((767 - y) * 1024 + x) * 3))
  near "$(byte_at "$shot" "$offset")" "$b" 8 && near "$(byte_at "$shot" $((offset + 1)))" "$g" 8 &&
    near "$(byte_at "$shot" $((offset + 2)))" "$r" 8 ||
    fail "pixel ($x, $y) is $(byte_at "$shot" "$offset") $(byte_at "$shot" $((offset + 1))) $(byte_at "$shot" $((offset + 2))), not $b $g $r"
}

make_work_directory "$exe" "$data"
log="$work/Logfile.txt"
# An empty scene, so that nothing but the sky lies under the console.
rm -f "$work/scenes/welcome.vra"
printf 'System.resolution = [1024, 768];\nBackground.drawClouds = false;\n' >"$work/config.cfg"
start_program "$log"
point_into_window
xdotool key F11
sleep 0.6
xdotool type --delay 30 'Sim.gravity = [0, -5]'
xdotool key Return
xdotool type --delay 30 'System.screenshot'
xdotool key Return
sleep 0.6
terminate_program
[ "$rc" -eq 0 ] || fail "exit code $rc"

expect_text "$work/config.cfg" "Sim.gravity = [0, -5];"
shot=$(ls "$work"/screenshots/vorra_*.tga 2>/dev/null | head -n 1)
[ -n "$shot" ] || fail "the console's screenshot command wrote nothing"
# The console's background (0.1, 0.1, 0.1) at 0.8 under the GUI's opaqueness of 0.9, over
# the sky (0.3, 0.4, 1.0), in a corner where no text stands; the sky below the console.
expect_pixel "$shot" 1000 40 90 47 40
expect_pixel "$shot" 512 600 255 102 77
echo PASS

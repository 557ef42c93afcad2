#!/usr/bin/env bash
# The real program with its data tree: resources are prefetched after the window opens, a
# bound key takes screenshots (24-bit TGA files of the window, numbered per day), the
# window is rebuilt with every resource reloaded, and a data tree missing any of its
# folders still starts, runs and ends cleanly.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
need_own_display "$@"
command -v xdotool >/dev/null || fail "xdotool is missing"

make_work_directory "$exe" "$data"
log="$work/Logfile.txt"
# An empty scene under a clear sky, so that the middle of the window shows the sky.
rm -f "$work/scenes/welcome.vra"
cat >"$work/config.cfg" <<'CFG'
System.resolution = [640, 480];
Background.drawClouds = false;
Resources.shaders = true;
Keys.bind("f12", { System.screenshot });
Keys.bind("f7", { System.antiAlias = 2; System.recreateWindow });
Keys.bind("f6", { Resources.reloadAll });
CFG
start_program "$log"
expect_text "$log" "Prefetching resources"
grep -q "Could not preload" "$log" && fail "a file of the data tree did not load"
point_into_window
xdotool key F12
sleep 0.5
xdotool key F7
sleep 0.5
xdotool key F6
sleep 0.3
xdotool key F12
sleep 0.5
terminate_program
[ "$rc" -eq 0 ] || fail "exit code $rc"

shots=("$work"/screenshots/vorra_*_000[01].tga)
[ "${#shots[@]}" -eq 2 ] && [ -f "${shots[1]}" ] || fail "two screenshots expected: ${shots[*]}"
expect_text "$log" "Screenshot saved to \"${shots[0]}\""
grep -c "Creating window..." "$log" | grep -qx 2 || fail "the window was not made anew"
expect_text "$log" " resources loaded"
for shot in "${shots[@]}"; do
  [ "$(stat -c %s "$shot")" -eq $((18 + 640 * 480 * 3)) ] || fail "$shot has the wrong size"
  [ "$(byte_at "$shot" 2)" -eq 2 ] && [ "$(byte_at "$shot" 16)" -eq 24 ] ||
    fail "$shot is no 24-bit true-colour TGA"
  [ $(($(byte_at "$shot" 12) + 256 * $(byte_at "$shot" 13))) -eq 640 ] || fail "$shot width"
  # The sky of the empty window, blue green red, in the middle of the picture.
  middle=$((18 + (240 * 640 + 320) * 3))
  near "$(byte_at "$shot" $middle)" 255 && near "$(byte_at "$shot" $((middle + 1)))" 102 &&
    near "$(byte_at "$shot" $((middle + 2)))" 77 || fail "$shot does not show the window"
done
rm -rf "$work"

# Each folder of the data tree taken away in turn, and then all of them.
folders=(background data fonts language scenes shaders textures vorralets)
for missing in "${folders[@]}" all; do
  make_work_directory "$exe" "$data"
  if [ "$missing" = all ]; then
    for folder in "${folders[@]}"; do rm -rf "${work:?}/$folder"; done
  else
    rm -rf "${work:?}/$missing"
  fi
  echo 'Resources.shaders = true;' >"$work/config.cfg"
  run_and_terminate "$work/Logfile.txt"
  [ "$rc" -eq 0 ] || fail "without $missing: exit code $rc"
  grep -q "Exception caught in main" "$work/Logfile.txt" && fail "without $missing: an exception"
  rm -rf "$work"
done
echo PASS

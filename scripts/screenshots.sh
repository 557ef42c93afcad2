#!/usr/bin/env bash
# Makes the README's pictures of the program, and the small pictures of the shipped scenes
# that the File window lists, by running the real program under Xvfb and driving it with
# xdotool. Run it again after a change of look:
#
#   bash scripts/screenshots.sh [path/to/vorra]
#
# Needs xvfb, xdotool and ImageMagick (apt-get install xvfb xdotool imagemagick).
set -euo pipefail
repo=$(cd "$(dirname "$0")/.." && pwd)
exe=$(realpath "${1:-$repo/build/bin/vorra}")
shots="$repo/docs/screenshots"
scenes="$repo/workdir/scenes"

for tool in xdotool import; do
  command -v "$tool" >/dev/null || { echo "$tool is missing" >&2; exit 1; }
done
[ -x "$exe" ] || { echo "no program at $exe: build it first" >&2; exit 1; }
# Everything below needs a display of its own.
if [ -z "${VORRA_SCREENSHOT_DISPLAY:-}" ]; then
  exec env VORRA_SCREENSHOT_DISPLAY=1 xvfb-run -a -s "-screen 0 1280x1024x24" \
    bash "$0" "$exe"
fi

work=$(mktemp -d)
trap 'kill "${pid:-0}" 2>/dev/null || true; rm -rf "$work"' EXIT
cp -r "$repo/workdir/." "$work/"
cp "$exe" "$work/vorra"
mkdir -p "$shots"

# Starts the program on a scene with the given configuration, and waits for its window.
start() {
  local scene=$1 config=$2
  rm -f "$work/config.cfg" "$work/config.autosave.cfg" "$work/Logfile.txt" \
    "$work/scenes/_AUTOSAVE.vra" "$work/scenes/_ONEXITSAVE.vra"
  printf '%s\n' "$config" >"$work/config.cfg"
  (cd "$work" && exec ./vorra "$work/scenes/$scene.vra" >/dev/null 2>&1) &
  pid=$!
  for _ in $(seq 1 100); do
    grep -qs "Running program..." "$work/Logfile.txt" && break
    sleep 0.1
  done
  window=$(xdotool search --sync --onlyvisible --name Vorra | head -n 1)
  sleep 1
}
stop() {
  kill "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
}
shoot() {
  import -window "$window" "$1"
  echo "wrote $1"
}

readme='System.resolution = [1024, 700];'
# The scene alone, at the window size the scenes' cameras are set for: every window of the
# interface closed.
bare='System.resolution = [1024, 768];
AppGUI.Toolbar.visible = false;
AppGUI.SimControl.visible = false;
AppGUI.SimInfo.visible = false;'

# The welcome scene with the File window open, which lists the scenes by their pictures.
start welcome "$readme"
xdotool mousemove --window "$window" 508 52 click 1
sleep 0.5
xdotool mousemove --window "$window" 600 600
sleep 0.3
shoot "$shots/welcome-file.png"
stop

# The menu of a box of the welcome scene, paused.
start welcome "$readme"
xdotool key space
xdotool mousemove --window "$window" 590 455 click 3
sleep 0.5
shoot "$shots/welcome-menu.png"
stop

# The dam break while the wave runs.
start dambreak "$readme"
shoot "$shots/dambreak.png"
stop

# The File window's pictures of the shipped scenes.
for path in "$scenes"/*.vra; do
  name=$(basename "$path" .vra)
  case $name in _*) continue ;; esac
  start "$name" "$bare"
  # The pointer out of the window, so that the program draws no cursor over the scene.
  xdotool mousemove 0 0
  sleep 0.3
  import -window "$window" -resize 160x120 "$scenes/$name.png"
  echo "wrote $scenes/$name.png"
  stop
done

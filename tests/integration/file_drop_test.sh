#!/usr/bin/env bash
# A scene file dragged from a file manager and dropped on the window loads as one undo step
# and names the window; a dropped file of another kind only warns. The drag is made by
# vorra-xdnd-drop, since xdotool cannot drag between programs.
exe=$1 data=$2 drop=$3
source "$(dirname "$0")/common.sh"
# 77 is the skip code the test is registered with.
for tool in xdotool xvfb-run; do
  command -v "$tool" >/dev/null || { echo "SKIP: $tool is missing"; exit 77; }
done
need_own_display "$@"
make_work_directory "$exe" "$data"
log="$work/Logfile.txt"

cat >"$work/config.cfg" <<'CFG'
System.resolution = [640, 480];
CFG
# A blank in the folder and the file name: the URI carries it percent-encoded.
mkdir "$work/my drops"
cp "$data/scenes/pendulum.vra" "$work/my drops/dropped pendulum.vra"
echo "not a scene" >"$work/my drops/notes.txt"

start_program "$log"
sleep 0.5
window=$(xdotool search --name Vorra | head -n 1)
[ -n "$window" ] || fail "no window named Vorra"

# Waits until the log holds the text.
wait_for_log() {
  for _ in $(seq 1 50); do
    grep -qsF -- "$1" "$log" && return
    sleep 0.1
  done
  fail "\"$1\" not found in $log"
}
# Waits until the window's title holds the text, or (with "not") no longer does.
wait_for_title() {
  local title
  for _ in $(seq 1 30); do
    title=$(xdotool getwindowname "$window")
    case "$title" in *"$1"*) return ;; esac
    sleep 0.1
  done
  fail "the title \"$title\" does not hold \"$1\""
}

wait_for_title welcome
"$drop" "$window" 320 240 "$work/my drops/dropped pendulum.vra" >"$work/drop.out" 2>&1 ||
  fail "the scene's drop failed: $(cat "$work/drop.out")"
wait_for_log "Loaded scene $work/my drops/dropped pendulum.vra"
wait_for_title "dropped pendulum"

"$drop" "$window" 100 100 "$work/my drops/notes.txt" >"$work/drop.out" 2>&1 ||
  fail "the text file's drop failed: $(cat "$work/drop.out")"
wait_for_log "Only scene files can be dropped here, not $work/my drops/notes.txt"
case "$(xdotool getwindowname "$window")" in
  *"dropped pendulum"*) ;;
  *) fail "the text file's drop changed the title to \"$(xdotool getwindowname "$window")\"" ;;
esac

# The drop was one undo step: Ctrl+Z brings the welcome scene back.
point_into_window
xdotool key ctrl+z
wait_for_title welcome
terminate_program
[ "$rc" -eq 0 ] || fail "exit code $rc"
echo PASS

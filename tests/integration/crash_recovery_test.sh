#!/usr/bin/env bash
# A program killed outright starts again where its last autosave left it: the autosave
# writes the configuration and the scene every autosaveTime seconds, never into the user's
# own file, and the next start takes both; a normal exit then clears them away.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
need_own_display "$@"
command -v xdotool >/dev/null || fail "xdotool is missing"
make_work_directory "$exe" "$data"
log="$work/Logfile.txt"
scenes="$work/scenes"

cat >"$work/config.cfg" <<'CFG'
System.resolution = [640, 480];
App.autosaveTime = 1.0;
Keys.bind("f5", { App.lineWidth = 3.5; Sim.gravity = [0, -3] });
CFG
cp "$scenes/bridge.vra" "$work/mine.vra"

start_program "$log" "$work/mine.vra"
sleep 0.5
point_into_window
xdotool key F5
sleep 2.5
kill -KILL "$pid"
wait "$pid" 2>/dev/null

[ -f "$work/config.autosave.cfg" ] || fail "no config.autosave.cfg after the autosave time"
[ -f "$scenes/_AUTOSAVE.vra" ] || fail "no _AUTOSAVE.vra after the autosave time"
expect_text "$work/config.autosave.cfg" "App.lineWidth = 3.5;"
expect_text "$scenes/_AUTOSAVE.vra" "Sim.gravity = [0, -3];"
cmp -s "$scenes/bridge.vra" "$work/mine.vra" || fail "the autosave wrote into the user's file"

# The next start recovers both, and a normal exit leaves them behind it.
run_and_terminate "$log"
[ "$rc" -eq 0 ] || fail "recovery run: exit code $rc"
expect_text "$log" "Recovering config.autosave.cfg from previous crash"
[ "$(grep "Loaded scene " "$log" | tail -n 1 | sed 's/.*Loaded scene //')" = "$scenes/_AUTOSAVE.vra" ] ||
  fail "the recovery run did not load the autosave"
expect_text "$work/config.cfg" "App.lineWidth = 3.5;"
expect_text "$scenes/_ONEXITSAVE.vra" "Sim.gravity = [0, -3];"
[ -e "$work/config.autosave.cfg" ] && fail "config.autosave.cfg survived a normal exit"
[ -e "$scenes/_AUTOSAVE.vra" ] && fail "_AUTOSAVE.vra survived a normal exit"
echo PASS

#!/usr/bin/env bash
# Which scene the program starts with, and what a normal exit leaves: the scene named on
# the command line (rejoined from its pieces), else the autosave a crash left, else the
# scene of the last exit, else the welcome scene. A normal exit saves "_ONEXITSAVE.vra"
# and removes the autosave.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
need_display "$@"
make_work_directory "$exe" "$data"
log="$work/Logfile.txt"
scenes="$work/scenes"

# The scene the latest run loaded first, from the log.
first_loaded() {
  grep "Loaded scene " "$log" | tail -n 1 | sed 's/.*Loaded scene //'
}

run_and_terminate "$log"
[ "$rc" -eq 0 ] || fail "first run: exit code $rc"
[ "$(first_loaded)" = "$scenes/welcome.vra" ] || fail "first run loaded $(first_loaded)"
[ -f "$scenes/_ONEXITSAVE.vra" ] || fail "no _ONEXITSAVE.vra after a normal exit"
[ -e "$scenes/_AUTOSAVE.vra" ] && fail "_AUTOSAVE.vra after a normal exit"

# The exit save wins over the welcome scene, and an argument that is no scene is ignored.
run_and_terminate "$log" notascene.txt
[ "$(first_loaded)" = "$scenes/_ONEXITSAVE.vra" ] || fail "second run loaded $(first_loaded)"

# A crash's autosave wins over the exit save, and the normal exit removes it.
cp "$scenes/pendulum.vra" "$scenes/_AUTOSAVE.vra"
run_and_terminate "$log"
[ "$(first_loaded)" = "$scenes/_AUTOSAVE.vra" ] || fail "recovery run loaded $(first_loaded)"
[ -e "$scenes/_AUTOSAVE.vra" ] && fail "_AUTOSAVE.vra survived a normal exit"

# A path with a blank arrives in two pieces and is joined again.
cp "$scenes/bridge.vra" "$work/my bridge.VRA"
run_and_terminate "$log" "$work/my" "bridge.VRA"
expect_text "$log" "Loading argument $work/my bridge.VRA"
[ "$(first_loaded)" = "$work/my bridge.VRA" ] || fail "argument run loaded $(first_loaded)"
echo PASS

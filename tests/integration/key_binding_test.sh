#!/usr/bin/env bash
# Keys pressed on a real X server reach the bindings of the configuration, a modifier
# combination fires only with its modifier, and the bindings are written back on exit.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
# A server of its own: windows of tests running beside this one would take the focus.
need_own_display "$@"
command -v xdotool >/dev/null || fail "xdotool is missing"
make_work_directory "$exe" "$data"
cfg="$work/config.cfg"
log="$work/Logfile.txt"

cat >"$cfg" <<'CFG'
System.resolution = [640, 480];
Keys.bind("f5", { System.maxFPS = 31 });
Keys.bind("left_ctrl k", { System.minFPS = 7 });
Keys.bind("k", { System.antiAlias = 3 });
Keys.bind("toggle mouse_middle", { System.vSync = false; System.maxFPS = System.maxFPS + 1 });
Keys.bind("nosuchkey", { System.maxFPS = 1 });
CFG

start_program "$log"
sleep 0.5
point_into_window
xdotool key F5
sleep 0.3
xdotool key ctrl+k
sleep 0.3
# The middle button, pressed and let go: the toggle fires once.
xdotool click 2
sleep 0.5
terminate_program
[ "$rc" -eq 0 ] || fail "exit code $rc"

expect_text "$log" 'Unknown name of key "nosuchkey"'
expect_text "$cfg" "System.maxFPS = 32;"
# Ctrl+K fired its own binding and not the one of "k" alone.
expect_text "$cfg" "System.minFPS = 7;"
grep -q "System.antiAlias = 3;" "$cfg" && fail "Ctrl+K fired the binding of k alone"
expect_text "$cfg" 'Keys.bind("f5", {'
expect_text "$cfg" 'Keys.bind("k", {'
# Printed in key order.
expect_text "$cfg" 'Keys.bind("k left_ctrl", {'
expect_text "$cfg" 'Keys.bind("toggle mouse_middle", {'
grep -q nosuchkey "$cfg" && fail "a binding of an unknown key was saved"
echo PASS

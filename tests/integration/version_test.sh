#!/usr/bin/env bash
# "-version" anywhere inside an argument prints the version and ends at once: no window,
# no log file.
exe=$1 data=$2
source "$(dirname "$0")/common.sh"
make_work_directory "$exe" "$data"
for args in "-version" "x -version" "a/versionb" "scene.vra --version"; do
  # shellcheck disable=SC2086
  env -u DISPLAY "$work/vorra" $args >"$work/stdout" 2>"$work/stderr"
  rc=$?
  [ "$rc" -eq 0 ] || fail "exit code $rc for \"$args\""
  [ "$(tail -n 1 "$work/stdout")" = "Vorra beta 4.13" ] || fail "no version line for \"$args\""
  [ -e "$work/Logfile.txt" ] && fail "a log file was written for \"$args\""
done
echo "PASS"

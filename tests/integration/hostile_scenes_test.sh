#!/usr/bin/env bash
# Scene files that no sensible scene is, through vorra-shell's load, steps and save, each in
# a process whose memory and processor time the system bounds: thousands of boxes or water
# particles at one point, a polygon of 400,000 points, a body of 20,000 shapes, a chain of
# 2,000 shapes held by fix joints, cleared and loaded again and undone. Each loads,
# runs and saves within the bounds (each of them once took gigabytes or minutes), says once
# what it left out, and the saved file loads again. A second argument "sanitized" leaves out
# the memory bound, since the address sanitizer reserves terabytes of address space, and
# allows more time.
shell=$1
memory=1500000
seconds=20
if [ "${2:-}" = sanitized ]; then
  memory=unlimited
  seconds=200
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; echo "--- output:" >&2; head -c 2000 "$work/out" >&2; exit 1; }

# Runs the shell on the scene under the bounds, with 100 steps and a save.
run_bounded() {
  local scene=$1
  (
    ulimit -v "$memory"
    ulimit -t "$seconds"
    exec "$shell" --load "$scene" --steps 100 --save "$scene.saved"
  ) >"$work/out" 2>&1 || fail "$(basename "$scene"): exit code $?"
  grep -q "^Loaded scene $scene" "$work/out" || fail "$(basename "$scene"): not loaded"
  "$shell" --load "$scene.saved" >"$work/again" 2>&1
  grep -q "^Loaded scene $scene.saved" "$work/again" || fail "$(basename "$scene"): save not loaded"
}

expect_said() {
  [ "$(grep -c -- "$1" "$work/out")" = 1 ] || fail "\"$1\" not said once"
}

# A ground, then the lines that awk makes.
scene() {
  local name=$1 program=$2
  { echo 'Scene.addPlane({normal = [0.0, 1.0]; dist = 0.0});'; awk "$program"; } </dev/null \
    >"$work/$name.vra"
  echo "$work/$name.vra"
}

boxes=$(scene boxes 'BEGIN { for (i = 0; i < 3000; i++)
  printf "Scene.addBox({size = [1.0, 1.0]; pos = [0.0, 3.0]; angle = %.3f});\n", i / 1000 }')
run_bounded "$boxes"
expect_said "Too many shapes piled up in one place"
[ "$(grep -c "Scene.addBox" "$boxes.saved")" = 3000 ] || fail "boxes were lost"

water=$(scene water 'BEGIN { printf "Scene.addWater({vecs = ["
  for (i = 0; i < 20000; i++) printf "%s[0.0, 1.0]", (i ? ", " : ""); print "]})" }')
run_bounded "$water"
expect_said "particles there are left out of the fluid and evaporate"

polygon=$(scene polygon 'BEGIN { printf "Scene.addPolygon({vecs = ["
  for (i = 0; i < 400000; i++)
    printf "%s[%.6f, %.6f]", (i ? ", " : ""), 5 * cos(i * 6.2831853 / 400000), 5 * sin(i * 6.2831853 / 400000)
  print "]});"
  print "Scene.addBox({size = [1.0, 1.0]; pos = [0.0, 3.0]; angle = 0.0})" }')
run_bounded "$polygon"
expect_said "Too many vertices in polygon: 400000, at most 8192"
# The failed line is named, not printed whole: the log and the console stay readable.
[ "$(wc -c <"$work/out")" -lt 10000 ] || fail "the failed line was written out whole"
grep -q "Scene.addBox" "$polygon.saved" || fail "the box after the polygon was lost"

body=$(scene body 'BEGIN { for (i = 0; i < 20000; i++)
  printf "Scene.addBox({size = [1.0, 1.0]; pos = [%d.0, 3.0]; angle = 0.0; body = 1});\n", i }')
run_bounded "$body"
[ "$(grep -c "body = " "$body.saved")" = 20000 ] || fail "the body's shapes were lost"
# Every fix joint once split its body again as the scene was cleared: minutes for this one.
chain=$(scene chain 'BEGIN { for (i = 0; i < 2000; i++)
    printf "Scene.addBox({size = [1.0, 1.0]; pos = [%d.0, 3.0]; angle = 0.0; geomID = %d});\n", i, i
  for (i = 0; i < 1999; i++)
    printf "Scene.addFixjoint({geom0 = %d; geom1 = %d; geom0pos = [0.5, 0.0]; geom1pos = [-0.5, 0.0]});\n", i, i + 1 }')
run_bounded "$chain" -e 'Scene.Clear' --load "$chain" --save "$chain.loaded" -e 'App.undo' \
  -e 'App.redo' --save "$chain.again"
# A load done again draws the colours the file does not give anew.
uncoloured() { sed 's/color = \[[^]]*\]; //' "$1"; }
cmp -s <(uncoloured "$chain.loaded") <(uncoloured "$chain.again") ||
  fail "undo and redo did not bring the chain back"
echo PASS

#!/usr/bin/env bash
# vorra-shell runs the language without a window: it must not link SDL or OpenGL, print
# what the console would, and end with 0 once its input is read.
shell=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; echo "--- output:" >&2; cat "$work/out" >&2; exit 1; }

if ldd "$shell" | grep -qiE 'libSDL|libGL|libGLEW|libGLU'; then
  fail "links a graphics library: $(ldd "$shell" | grep -iE 'SDL|GL')"
fi

"$shell" --help >"$work/out" || fail "--help failed"
grep -q "^Usage: vorra-shell" "$work/out" || fail "no usage text"

"$shell" -e 'x = 2; x * 3' -e 'f = (a)=>{ a + x }' -e 'x = 10; f 1' -e 'nope' -e '1 = 2' \
  -e 'x' >"$work/out"
rc=$?
[ "$rc" -eq 0 ] || fail "exit code $rc"
expected='6
(a)=>{a + x}
11
-- Warning: Failed to evaluate: nope, nope not found in scope
Parse error: You can only assign to an identifier
Tree evaluation error: Tried to dereference a NULL SharedPtr
10'
[ "$(cat "$work/out")" = "$expected" ] || fail "unexpected output"

# A file is one entry: its statements run in order and a failed one costs only itself.
printf 'a = 1;\nb = missing;\nc = a + 1;\nc\n' >"$work/script.txt"
"$shell" "$work/script.txt" >"$work/out" || fail "file entry failed"
[ "$(tail -n 1 "$work/out")" = "2" ] || fail "file entry result"

# Without arguments, each line of standard input is one entry.
printf 'l = [1, 2]\nl + [3, 4]\n"a" + 1\n' | "$shell" >"$work/out" || fail "stdin failed"
[ "$(cat "$work/out")" = "$(printf '[1, 2]\n[4, 6]\na1')" ] || fail "stdin output"

# A missing file is reported and the rest still runs.
"$shell" "$work/missing.txt" >"$work/out"
[ $? -eq 0 ] || fail "missing file changed the exit code"
grep -q "Failed to open file" "$work/out" || fail "missing file not reported"
# The simulation is there without a window, its tunables as attributes.
"$shell" -e 'Sim.gravity' -e 'Sim.timeDelta = 0.02; Sim.solveIter' -e 'Sim.timeDelta' \
  -e 'Sim.time' >"$work/out" || fail "Sim entries failed"
[ "$(cat "$work/out")" = "$(printf '[0, -9.8]\n30\n0.02\n0')" ] || fail "Sim attributes"
# The fluid's settings and figures are there too.
"$shell" -e 'SPH.radius' -e 'SPH.influence = 3; SPH.influence' -e 'SPH.AVG_density' \
  >"$work/out" || fail "SPH entries failed"
[ "$(cat "$work/out")" = "$(printf '0.05\n3\n0')" ] || fail "SPH attributes"
echo PASS

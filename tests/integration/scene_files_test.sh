#!/usr/bin/env bash
# Scene files through vorra-shell: the shipped scenes load without a word, a scene written,
# read and written again is the same text, and a loaded scene runs to the same bits in
# every process. Options run in their order among the -e entries.
shell=$1
scenes=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; echo "--- output:" >&2; cat "$work/out" >&2; exit 1; }

count=0
for scene in "$scenes"/*.vra; do
  name=$(basename "$scene" .vra)
  "$shell" --load "$scene" --save "$work/$name.1.vra" >"$work/out" || fail "$name: exit code"
  cmp -s "$scene" "$work/$name.1.vra" || fail "$name: the shipped text is not what a save writes"
  [ "$(cat "$work/out")" = "Loaded scene $scene" ] || fail "$name: loading said more than that"
  "$shell" --load "$work/$name.1.vra" --save "$work/$name.2.vra" >"$work/out"
  cmp -s "$work/$name.1.vra" "$work/$name.2.vra" || fail "$name: text changed on the way round"
  for run in a b; do
    "$shell" --load "$scene" --steps 200 --save "$work/$name.$run.vra" >"$work/out"
  done
  cmp -s "$work/$name.a.vra" "$work/$name.b.vra" || fail "$name: two runs differ"
  cmp -s "$work/$name.a.vra" "$work/$name.1.vra" && fail "$name: nothing moved"
  count=$((count + 1))
done
[ "$count" -ge 2 ] || fail "only $count scenes shipped"
grep -q "welcome" <(ls "$scenes") || fail "no welcome scene"

# The options in their order: a box made and saved, the scene cleared, the box loaded
# back and dropped.
"$shell" -e 'Scene.addBox({size = [1.0, 1.0]; pos = [0.0, 5.0]; angle = 0.0})' \
  --save "$work/box.vra" -e 'Scene.Clear' --save "$work/empty.vra" --load "$work/box.vra" \
  --steps 100 --save "$work/dropped.vra" >"$work/out" || fail "ordered options"
grep -q "Scene.addBox" "$work/empty.vra" && fail "the clear ran after the save"
grep -q "pos = \[0.0, 5.0\]" "$work/box.vra" || fail "the box was not saved"
grep -q "Scene.addBox" "$work/dropped.vra" || fail "the box was not loaded"
grep -q "pos = \[0.0, 5.0\]" "$work/dropped.vra" && fail "the box did not fall"

# A load is a step of the history: App.undo brings back the scene before it, App.redo the
# load again.
"$shell" -e 'Scene.addCircle({radius = 1.0; pos = [3.0, 5.0]; angle = 0.0})' --steps 10 \
  --save "$work/before.vra" --load "$work/box.vra" -e 'App.undo' --save "$work/undone.vra" \
  -e 'App.redo' --save "$work/redone.vra" >"$work/out" || fail "undo of a load"
cmp -s "$work/before.vra" "$work/undone.vra" || fail "undoing the load did not bring the scene back"
cmp -s "$work/box.vra" "$work/redone.vra" || fail "redoing the load did not load the file again"

# A file that does not parse leaves the scene that was there.
printf 'Scene.addBox({size = [1.0, 1.0]; pos = [(0.0, 5.0]' >"$work/broken.vra"
"$shell" --load "$work/box.vra" --load "$work/broken.vra" --save "$work/kept.vra" >"$work/out"
grep -q "Couldn't load" "$work/out" || fail "broken file not reported"
grep -q "Scene.addBox" "$work/kept.vra" || fail "the scene was lost"

# Bad arguments.
"$shell" --steps many >"$work/out" 2>&1 && fail "--steps took a word"
"$shell" --load >"$work/out" 2>&1 && fail "--load without a path"
echo PASS

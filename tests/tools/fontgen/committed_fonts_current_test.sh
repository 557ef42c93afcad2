#!/usr/bin/env bash
# The committed fonts are exactly what the generator writes with the committed options, so
# a font left stale after a change to the generator or its options shows here.
set -u
fontgen=$1 regenerate=$2 fonts=$3
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

bash "$regenerate" "$fontgen" "$out" >/dev/null || { echo "FAIL: regenerate.sh failed"; exit 1; }
status=0
for file in arial_black.raw arial_black.dat fixedsys.raw fixedsys.dat; do
  if ! cmp -s "$out/$file" "$fonts/$file"; then
    echo "FAIL: $fonts/$file differs from the generator's output;" \
      "run tools/fontgen/regenerate.sh and commit the result"
    status=1
  fi
done
[ $status -eq 0 ] && echo "PASS"
exit $status

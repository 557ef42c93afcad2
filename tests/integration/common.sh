# Shared by the program tests: a private work directory holding a copy of the program and
# its data tree, since the work directory is the folder of the executable.
set -u

fail() {
  echo "FAIL: $*" >&2
  for f in "$work"/Logfile.txt "$work"/stdout "$work"/stderr; do
    [ -f "$f" ] && { echo "--- $f" >&2; tail -n 40 "$f" >&2; }
  done
  exit 1
}

make_work_directory() {
  local exe=$1 data=$2
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  cp -r "$data"/. "$work"/
  cp "$exe" "$work/vorra"
}

# Fails unless the file holds the exact text.
expect_text() {
  grep -qF -- "$2" "$1" || fail "\"$2\" not found in $1"
}

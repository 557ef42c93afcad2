#!/usr/bin/env bash
# Fuzzes the script language (tokenizer, parser, printer, evaluator) with libFuzzer.
#
# Usage: scripts/fuzz.sh [SECONDS] [-- extra libFuzzer options]
#   SECONDS  how long to fuzz; default 300. 0 only builds.
#
#   scripts/fuzz.sh                 build, then fuzz for five minutes
#   scripts/fuzz.sh 60 -- -dict=x   one minute, with extra options for libFuzzer
#   build-fuzz/script_fuzz build-fuzz/findings/crash-...    replay one finding
#
# Builds with clang++ and -fsanitize=fuzzer,address,undefined into build-fuzz/, apart from
# the CMake build. The corpus grows in build-fuzz/corpus, seeded from tests/fuzz/corpus;
# crashes, leaks and slow inputs go to build-fuzz/findings. One job, one worker: the
# machine is shared. Hangs and out-of-memory inputs are kept in findings but do not stop
# the run (a script may legitimately do exponential work); crashes do.
#
# Environment: CXX (default clang++), JOBS for the build (default 2),
#   VORRA_FUZZ_STRICT_ROUNDTRIP=1 traps when printed code does not print back the same.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
SECONDS_TO_RUN="${1:-300}"
shift || true
if [[ "${1:-}" == "--" ]]; then
    shift
fi

CXX="${CXX:-clang++}"
JOBS="${JOBS:-2}"
OUT="$ROOT/build-fuzz"
OBJ="$OUT/obj"
FLAGS=(-std=c++20 -O1 -g -fno-omit-frame-pointer -fsanitize=fuzzer,address,undefined
       -I "$ROOT/src")
mkdir -p "$OBJ" "$OUT/corpus" "$OUT/findings"

# Only the foundation and the language: no SDL, no OpenGL.
mapfile -t SOURCES < <(find "$ROOT/src/util" "$ROOT/src/math" "$ROOT/src/logging" \
                            "$ROOT/src/script" -name '*.cpp' | sort)
SOURCES+=("$ROOT/tests/fuzz/ScriptFuzz.cpp")

# One object per source, rebuilt when the source or any header is newer (headers are
# few; a header change rebuilds all).
newest_header="$(find "$ROOT/src" "$ROOT/tests/fuzz" -name '*.h' -printf '%T@\n' | sort -n | tail -1)"
stale=()
objects=()
for src in "${SOURCES[@]}"; do
    rel="${src#"$ROOT"/}"
    obj="$OBJ/${rel//\//_}.o"
    objects+=("$obj")
    if [[ ! -f "$obj" || "$src" -nt "$obj" ]] ||
       awk -v h="$newest_header" -v o="$(stat -c %Y "$obj")" 'BEGIN { exit !(h > o) }'; then
        stale+=("$src")
    fi
done
if ((${#stale[@]})); then
    echo "Compiling ${#stale[@]} file(s) with $CXX..."
    export CXX OBJ ROOT
    printf '%s\n' "${stale[@]}" | xargs -P "$JOBS" -I{} bash -c '
        src="{}"; rel="${src#"$ROOT"/}"
        exec "$CXX" '"${FLAGS[*]@Q}"' -c "$src" -o "$OBJ/${rel//\//_}.o"'
fi
"$CXX" "${FLAGS[@]}" "${objects[@]}" -o "$OUT/script_fuzz"
echo "Built $OUT/script_fuzz"

if [[ "$SECONDS_TO_RUN" == 0 ]]; then
    exit 0
fi

# Fork mode with one worker is what lets hangs and out-of-memory inputs be recorded
# without ending the run.
cd "$OUT"
exec ./script_fuzz corpus "$ROOT/tests/fuzz/corpus" \
    -fork=1 -ignore_timeouts=1 -ignore_ooms=1 \
    -max_total_time="$SECONDS_TO_RUN" -max_len=4096 -timeout=5 -rss_limit_mb=2048 \
    -artifact_prefix="$OUT/findings/" -print_final_stats=1 "$@"

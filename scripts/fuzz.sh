#!/usr/bin/env bash
# Fuzzes the script language (tokenizer, parser, printer, evaluator) with libFuzzer.
#
# Usage: scripts/fuzz.sh [SECONDS] [-- extra libFuzzer options]
#   SECONDS  how long to fuzz; default 300. 0 only builds.
#
#   scripts/fuzz.sh                 build, then fuzz for five minutes
#   scripts/fuzz.sh 60 -- -seed=1   one minute, with extra options for libFuzzer
#   build-fuzz/script_fuzz build-fuzz/findings/crash-...    replay one finding
#
# Builds with clang++ and -fsanitize=fuzzer,address,undefined into build-fuzz/, apart from
# the CMake build. The corpus grows in build-fuzz/corpus, seeded from tests/fuzz/corpus;
# crashes and sanitizer reports go to build-fuzz/findings. One job, one worker: the
# machine is shared. Hangs and out-of-memory inputs are kept in findings but do not stop
# the run (a script may legitimately do exponential work); crashes do.
#
# Environment: CXX (default clang++), JOBS for the build (default 2). For the target:
#   VORRA_FUZZ_STRICT_ROUNDTRIP=1  trap when printed code does not print back the same
#   VORRA_FUZZ_COUNT_LIVE=1        trap when objects outlive their input (reference cycles)
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

# One object per source with its dependency list. An object carries the time its compile
# started, so that a file edited during the build (others work in this tree) makes it
# stale again; the build repeats until nothing is stale.
object_of() {
    local rel="${1#"$ROOT"/}"
    echo "$OBJ/${rel//\//_}.o"
}
is_stale() {
    local obj
    obj="$(object_of "$1")"
    [[ -f "$obj" && -f "$obj.d" ]] || return 0
    local dep
    for dep in $(sed -e 's/^[^:]*://' -e 's/\\$//' "$obj.d"); do
        [[ -f "$dep" && ! "$dep" -nt "$obj" ]] || return 0
    done
    return 1
}
compile() {
    local src="$1" obj started
    obj="$(object_of "$src")"
    started="$(date +%s.%N)"
    "$CXX" "${FLAGS[@]}" -MMD -MF "$obj.d" -c "$src" -o "$obj" && touch -d "@$started" "$obj"
}
export -f object_of compile
export CXX OBJ ROOT
export FLAGS_TEXT="${FLAGS[*]}"

objects=()
for src in "${SOURCES[@]}"; do
    objects+=("$(object_of "$src")")
done
for round in 1 2 3 4 5; do
    stale=()
    for src in "${SOURCES[@]}"; do
        if is_stale "$src"; then
            stale+=("$src")
        fi
    done
    ((${#stale[@]})) || break
    if ((round == 5)); then
        echo "Sources keep changing during the build; try again later." >&2
        exit 1
    fi
    echo "Compiling ${#stale[@]} file(s) with $CXX..."
    printf '%s\n' "${stale[@]}" |
        xargs -P "$JOBS" -I{} bash -c 'read -ra FLAGS <<< "$FLAGS_TEXT"; compile "$1"' _ {}
done
"$CXX" "${FLAGS[@]}" "${objects[@]}" -o "$OUT/script_fuzz"
echo "Built $OUT/script_fuzz"

# The language's own words and signs, so that mutations speak it sooner.
cat > "$OUT/script.dict" <<'EOF'
"infix"
"left"
"right"
"=>"
"_"
"="
";"
","
"."
"("
")"
"["
"]"
"{"
"}"
"\""
"\\"
"\\n"
"//"
"true"
"false"
"+inf"
"-inf"
"1.5e3"
"math"
"math.add"
"math.negate"
"math.sin"
"math.pi"
" + "
" - "
" * "
" / "
"!"
"(x)=>{"
"(a, b)=>{"
EOF

if [[ "$SECONDS_TO_RUN" == 0 ]]; then
    exit 0
fi

# Fork mode with one worker is what lets hangs and out-of-memory inputs be recorded
# without ending the run.
cd "$OUT"
exec ./script_fuzz corpus "$ROOT/tests/fuzz/corpus" \
    -fork=1 -ignore_timeouts=1 -ignore_ooms=1 \
    -max_total_time="$SECONDS_TO_RUN" -max_len=4096 -timeout=5 -rss_limit_mb=2048 \
    -dict="$OUT/script.dict" -artifact_prefix="$OUT/findings/" -print_final_stats=1 "$@"

#!/usr/bin/env bash
# Fuzzes Vorra with libFuzzer. Two targets:
#   script  the script language: tokenizer, parser, printer, evaluator (tests/fuzz/ScriptFuzz.cpp)
#   scene   scene files through the shell's load, a few steps, save and load of the save
#           (tests/fuzz/SceneFuzz.cpp with SceneHarness.cpp; no SDL, no OpenGL)
#
# Usage: scripts/fuzz.sh [script|scene] [SECONDS] [-- extra libFuzzer options]
#   TARGET   which target; default script
#   SECONDS  how long to fuzz; default 300. 0 only builds.
#
#   scripts/fuzz.sh                      build the script target, then fuzz for five minutes
#   scripts/fuzz.sh 60 -- -seed=1        script target, one minute, extra options for libFuzzer
#   scripts/fuzz.sh scene 0              build the scene target only
#   scripts/fuzz.sh scene 120            scene target, two minutes
#   build-fuzz/scene_fuzz build-fuzz/findings-scene/crash-...    replay one finding
#
# Builds with clang++ and -fsanitize=fuzzer,address,undefined into build-fuzz/, apart from
# the CMake build; both targets share one object folder. Each target has its own corpus,
# build-fuzz/corpus-TARGET, seeded from tests/fuzz/corpus (script) or from the shipped scenes,
# tests/fuzz/scene-corpus and tests/fuzz/scene-regressions (scene); its own dictionary,
# tests/fuzz/TARGET.dict; and its own findings folder, build-fuzz/findings-TARGET, for crashes
# and sanitizer reports. One job, one worker: the machine is shared. Hangs and out-of-memory
# inputs are kept in findings but do not stop the run (a script may legitimately do
# exponential work, a scene may hold more than a step can take); crashes do. A scene
# finding worth keeping goes to tests/fuzz/scene-regressions/, which the test suite replays.
#
# Environment: CXX (default clang++), JOBS for the build (default 2). For the script target:
#   VORRA_FUZZ_STRICT_ROUNDTRIP=1  trap when printed code does not print back the same
#   VORRA_FUZZ_COUNT_LIVE=1        trap when objects outlive their input (reference cycles)
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
TARGET=script
case "${1:-}" in
    script | scene)
        TARGET="$1"
        shift
        ;;
    "" | -- | [0-9]*) ;;
    *)
        echo "Unknown target \"$1\": script or scene." >&2
        exit 2
        ;;
esac
SECONDS_TO_RUN=300
if [[ $# -gt 0 && "$1" != "--" ]]; then
    SECONDS_TO_RUN="$1"
    shift
fi
if [[ ! "$SECONDS_TO_RUN" =~ ^[0-9]+$ ]]; then
    echo "SECONDS must be a whole number, not \"$SECONDS_TO_RUN\"." >&2
    exit 2
fi
if [[ "${1:-}" == "--" ]]; then
    shift
fi

CXX="${CXX:-clang++}"
JOBS="${JOBS:-2}"
OUT="$ROOT/build-fuzz"
OBJ="$OUT/obj"
FLAGS=(-std=c++20 -O1 -g -fno-omit-frame-pointer -fsized-deallocation
       -fsanitize=fuzzer,address,undefined
       -I "$ROOT/src" -I "$ROOT/tools")
# Corpus and findings had no target in their names while the script target was the only one.
for kind in corpus findings; do
    if [[ -d "$OUT/$kind" && ! -e "$OUT/$kind-script" ]]; then
        mv "$OUT/$kind" "$OUT/$kind-script"
    fi
done
CORPUS="$OUT/corpus-$TARGET"
FINDINGS="$OUT/findings-$TARGET"
mkdir -p "$OBJ" "$CORPUS" "$FINDINGS"

# Both targets: the foundation and the language. The scene target adds the physics, the
# scene model and the shell's engine (not its main); no SDL, no OpenGL.
case "$TARGET" in
    script)
        mapfile -t SOURCES < <(find "$ROOT/src/util" "$ROOT/src/math" "$ROOT/src/logging" \
                                    "$ROOT/src/script" -name '*.cpp' | sort)
        SOURCES+=("$ROOT/tests/fuzz/RootBaseline.cpp" "$ROOT/tests/fuzz/ScriptFuzz.cpp")
        LINK_FLAGS=()
        SEEDS=("$ROOT/tests/fuzz/corpus")
        RUN_OPTIONS=(-max_len=4096 -timeout=5)
        ;;
    scene)
        mapfile -t SOURCES < <(find "$ROOT/src/util" "$ROOT/src/math" "$ROOT/src/logging" \
                                    "$ROOT/src/script" "$ROOT/src/physics" "$ROOT/src/app" \
                                    -name '*.cpp' | sort)
        SOURCES+=("$ROOT/tools/Shell.cpp" "$ROOT/tests/fuzz/RootBaseline.cpp"
                  "$ROOT/tests/fuzz/SceneHarness.cpp" "$ROOT/tests/fuzz/SceneFuzz.cpp")
        # Polygon maps build on helper threads.
        LINK_FLAGS=(-pthread)
        SEEDS=("$ROOT/workdir/scenes" "$ROOT/tests/fuzz/scene-corpus"
               "$ROOT/tests/fuzz/scene-regressions")
        # The shipped scenes are up to 25 KB; a load with its steps may take seconds under
        # the sanitizers.
        RUN_OPTIONS=(-max_len=32768 -timeout=10)
        ;;
esac

# The flags of one source: the common ones, and those the CMake build gives the physics
# (no fused multiply and add, so that the contact sweep gives the same bits at every
# vector width; eight-lane vectors built apart).
WIDE_SWEEP=""
if [[ "$(uname -m)" == x86_64 ]]; then
    WIDE_SWEEP=1
fi
flags_of() {
    local flags="$FLAGS_TEXT"
    case "$1" in
        "$ROOT"/src/physics/*)
            flags+=" -ffp-contract=off"
            if [[ -n "$WIDE_SWEEP" ]]; then
                flags+=" -DVORRA_WIDE_SWEEP"
                if [[ "$1" == "$ROOT/src/physics/RowBatchesWide.cpp" ]]; then
                    flags+=" -mavx"
                fi
            fi
            ;;
    esac
    echo "$flags"
}

# One object per source with its dependency list and the flags it was built with. An object
# carries the time its compile started, so that a file edited during the build (others work
# in this tree) makes it stale again; the build repeats until nothing is stale.
object_of() {
    local rel="${1#"$ROOT"/}"
    echo "$OBJ/${rel//\//_}.o"
}
is_stale() {
    local obj
    obj="$(object_of "$1")"
    [[ -f "$obj" && -f "$obj.d" && -f "$obj.flags" ]] || return 0
    [[ "$(<"$obj.flags")" == "$(flags_of "$1")" ]] || return 0
    local dep
    for dep in $(sed -e 's/^[^:]*://' -e 's/\\$//' "$obj.d"); do
        [[ -f "$dep" && ! "$dep" -nt "$obj" ]] || return 0
    done
    return 1
}
compile() {
    local src="$1" obj started flags
    obj="$(object_of "$src")"
    flags="$(flags_of "$src")"
    started="$(date +%s.%N)"
    local -a words
    read -ra words <<< "$flags"
    rm -f "$obj.flags"
    "$CXX" "${words[@]}" -MMD -MF "$obj.d" -c "$src" -o "$obj" &&
        touch -d "@$started" "$obj" && echo "$flags" > "$obj.flags"
}
export -f object_of flags_of compile
export CXX OBJ ROOT WIDE_SWEEP
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
    printf '%s\n' "${stale[@]}" | xargs -P "$JOBS" -I{} bash -c 'compile "$1"' _ {}
done
BINARY="$OUT/${TARGET}_fuzz"
"$CXX" "${FLAGS[@]}" "${objects[@]}" "${LINK_FLAGS[@]}" -o "$BINARY"
echo "Built $BINARY"

if [[ "$SECONDS_TO_RUN" == 0 ]]; then
    exit 0
fi

# Fork mode with one worker is what lets hangs and out-of-memory inputs be recorded
# without ending the run.
cd "$OUT"
exec "$BINARY" "$CORPUS" "${SEEDS[@]}" \
    -fork=1 -ignore_timeouts=1 -ignore_ooms=1 \
    -max_total_time="$SECONDS_TO_RUN" "${RUN_OPTIONS[@]}" -rss_limit_mb=2048 \
    -dict="$ROOT/tests/fuzz/$TARGET.dict" -artifact_prefix="$FINDINGS/" -print_final_stats=1 \
    "$@"

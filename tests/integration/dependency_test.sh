#!/bin/bash
# Fails when a folder includes what lies above it: the headless libraries (foundation,
# script language, physics, scene model) must build without SDL, OpenGL or any of the
# window side, and the toolkit's folders never reach into the application.
# Usage: dependency_test.sh SRC_DIR "SCENE;MODEL;FILES"
set -u
src=$1
IFS=';' read -r -a model_files <<< "$2"
failed=0

# Prints the includes of the files that match none of the allowed patterns.
check() {
    local what=$1 forbidden=$2
    shift 2
    local hits
    hits=$(grep -HnE "^[[:space:]]*#[[:space:]]*include[[:space:]]*[<\"]($forbidden)" "$@" 2>/dev/null)
    if [ -n "$hits" ]; then
        echo "$what must not include these:"
        echo "$hits" | sed "s|$src/||"
        failed=1
    fi
}

window='SDL|GL/|GLES|glew|gui/|input/|rendering/|core/|os/'
headless=()
for dir in util math logging script physics app/entities; do
    while IFS= read -r file; do headless+=("$file"); done \
        < <(find "$src/$dir" -name '*.h' -o -name '*.cpp')
done
for file in "${model_files[@]}"; do headless+=("$file"); done
[ ${#headless[@]} -gt 0 ] || { echo "no sources found under $src"; exit 1; }
check "The headless libraries" "$window" "${headless[@]}"

# Below the scene model nothing knows of it.
below=()
for dir in util math logging script physics; do
    while IFS= read -r file; do below+=("$file"); done < <(find "$src/$dir" -name '*.h' -o -name '*.cpp')
done
check "The foundation, script and physics" 'app/' "${below[@]}"

# The scene model names only its own files of src/app.
for file in "${headless[@]}"; do
    grep -hoE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"app/[^"]+"' "$file" |
        sed -E 's/.*"app\/([^"]+)"/\1/' | while read -r included; do
        path="$src/app/$included"
        case "$included" in entities/*) continue ;; esac
        if ! printf '%s\n' "${model_files[@]}" | grep -qxF "$path"; then
            echo "${file#"$src"/} includes the window side's app/$included"
            exit 1
        fi
    done || failed=1
done

# The toolkit's folders stand below the application.
for dir in input gui rendering; do
    [ -d "$src/$dir" ] || continue
    mapfile -t files < <(find "$src/$dir" -name '*.h' -o -name '*.cpp')
    [ ${#files[@]} -gt 0 ] && check "src/$dir" 'core/|physics/' "${files[@]}"
    # Text edits are steps of the scene's undo history: the GUI may name the history and
    # the action it holds, and nothing else of the application.
    hits=$(grep -HnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"app/' "${files[@]}" |
        grep -vE "^$src/gui/[^:]*:[0-9]+:#include \"app/(Action|Undoer)\.h\"")
    if [ -n "$hits" ]; then
        echo "src/$dir must not include these:"
        echo "$hits" | sed "s|$src/||"
        failed=1
    fi
done
[ -d "$src/rendering" ] && {
    mapfile -t files < <(find "$src/rendering" -name '*.h' -o -name '*.cpp')
    [ ${#files[@]} -gt 0 ] && check "src/rendering" 'script/|input/|gui/' "${files[@]}"
}
[ -d "$src/input" ] && {
    mapfile -t files < <(find "$src/input" -name '*.h' -o -name '*.cpp')
    check "src/input" 'gui/|rendering/|GL/' "${files[@]}"
    # One file reads SDL's events; the rest work with the records.
    others=()
    for file in "${files[@]}"; do
        case "$file" in */SdlEvents.cpp | */SdlKeyMap.cpp | */Joystick.cpp) ;; *) others+=("$file") ;; esac
    done
    check "src/input, but for its translation of SDL" 'SDL' "${others[@]}"
}

if [ $failed -ne 0 ]; then
    exit 1
fi
echo "dependencies in order: ${#headless[@]} headless files checked"

#!/usr/bin/env bash
# Installs what is missing, builds Vorra and starts it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j2 --target vorra
exec ./build/bin/vorra "$@"

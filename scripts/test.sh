#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite. Window tests
# run on a virtual X server started for the run.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j2
cd build
xvfb-run -a -s "-screen 0 1280x1024x24" ctest --output-on-failure -j2

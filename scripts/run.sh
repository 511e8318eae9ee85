#!/usr/bin/env bash
# Installs the dependencies, builds the program and starts it.
# Usage: scripts/run.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."

build="${1:-build}"
scripts/install-deps.sh
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$build" --parallel "$(nproc)" --target valtrona
exec "$build/src/app/valtrona"

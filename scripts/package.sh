#!/usr/bin/env bash
# Installs the dependencies, builds a Release without tests and packs the
# Debian package. Prints the path of the .deb on standard output; everything
# else goes to standard error.
# Usage: scripts/package.sh [build-dir]     (default build-package)
set -euo pipefail
cd "$(dirname "$0")/.."

build="${1:-build-package}"
{
    scripts/install-deps.sh
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
        -DVALTRONA_TESTS=OFF -DVALTRONA_EXAMPLES=OFF
    cmake --build "$build" --parallel "$(nproc)"
    rm -f "$build"/valtrona_*.deb
    (cd "$build" && cpack -G DEB)
} >&2
realpath "$build"/valtrona_*.deb

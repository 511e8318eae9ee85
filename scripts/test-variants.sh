#!/usr/bin/env bash
# The builds CI adds to the main one: the libraries and the command line
# without the window (VALTRONA_GUI=OFF), once plain and once with
# AddressSanitizer and UBSan, each running the core, imaging, batch and
# command-line tests. Usage: scripts/test-variants.sh [build-dir-prefix]
set -euo pipefail
cd "$(dirname "$0")/.."

prefix="${1:-build}"
jobs="$(nproc)"

# Without the window: nothing of Qt Widgets may be needed.
cmake -S . -B "$prefix-nogui" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVALTRONA_GUI=OFF -DVALTRONA_WERROR=ON
cmake --build "$prefix-nogui" --parallel "$jobs"
ctest --test-dir "$prefix-nogui" --output-on-failure --parallel "$jobs"

# With the sanitizers. The image library's own caches live until the
# process ends, so leak reports are left off; every other finding fails.
cmake -S . -B "$prefix-sanitize" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DVALTRONA_GUI=OFF -DVALTRONA_SANITIZE=ON -DVALTRONA_WERROR=ON
cmake --build "$prefix-sanitize" --parallel "$jobs"
ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir "$prefix-sanitize" --output-on-failure --parallel "$jobs" \
    -R '^(core|imaging|batch|cli)_'

#!/usr/bin/env bash
# Measures the memory one drawing takes against the estimate the engine
# admits it by (imaging::drawMemory), for every kind of decoder, for the
# encoders that take the whole picture (WebP, AVIF) and for a picture that
# is turned upright. Each drawing runs in a process of its own (drawprobe),
# after a warm-up drawing of a tiny file of the same kind, so the rise of
# the peak is what one more drawing costs. The pictures for the decoders are
# tall and narrow, so that what a whole-image decoder holds outweighs the
# streaming buffers, which grow with the width.
# Prints one row per file and exits non-zero when a drawing took more than
# its estimate.
# Usage: bench/memory.sh [build-dir]   (configured with -DVALTRONA_BENCH=ON)
set -euo pipefail
cd "$(dirname "$0")/.."

build="${1:-build-bench}"
cmake --build "$build" --target drawprobe >&2
probe="$build/bench/drawprobe"
work="$(mktemp -d "${TMPDIR:-/tmp}/valtrona-memory.XXXXXX")"
trap 'rm -rf "$work"' EXIT

vips black "$work/tall.v" 1000 12000 --bands 3
vips black "$work/wide.v" 8000 300 --bands 3
vips black "$work/photo.v" 3000 2000 --bands 3
vips black "$work/tiny.v" 16 12 --bands 3

# base name options width height format orientation
cases=(
    "tall baseline.jpg - 100 1200 jpeg 1"
    "tall progressive.jpg [interlace] 100 1200 jpeg 1"
    "tall plain.png - 100 1200 jpeg 1"
    "tall interlaced.png [interlace] 100 1200 jpeg 1"
    "tall frame.gif - 100 1200 jpeg 1"
    "tall strips.tif - 100 1200 jpeg 1"
    "tall lossy.webp - 100 1200 jpeg 1"
    "wide wide.jpg - 4000 150 jpeg 1"
    "wide wide.png - 1000 40 jpeg 1"
    "photo to-webp.jpg - 3000 2000 webp 1"
    "photo to-avif.jpg - 3000 2000 avif 1"
    "photo turned.jpg - 4000 6000 jpeg 6"
)

printf '%-16s %12s %12s %8s\n' file estimate measured ratio
over=0
for entry in "${cases[@]}"; do
    read -r base name options width height format orientation <<<"$entry"
    [ "$options" = - ] && options=""
    vips copy "$work/$base.v" "$work/$name$options"
    vips copy "$work/tiny.v" "$work/tiny-$name$options"
    if [ "$orientation" != 1 ]; then
        exiftool -q -overwrite_original -n "-Orientation=$orientation" "$work/$name" "$work/tiny-$name"
    fi
    status=0
    result="$("$probe" "$work/$name" "$width" "$height" "$format" "$work/tiny-$name")" || status=$?
    if [ "$status" -eq 3 ]; then
        echo "the peak resident memory cannot be reset on this system" >&2
        exit 2
    fi
    [ "$status" -eq 0 ] || { echo "$name: $result" >&2; exit 1; }
    read -r _ estimate _ measured <<<"$result"
    mark=""
    if [ "$measured" -gt "$estimate" ]; then mark="  over the estimate"; over=1; fi
    printf '%-16s %9d KiB %9d KiB %8s%s\n' "$name" $((estimate / 1024)) $((measured / 1024)) \
        "$(awk -v m="$measured" -v e="$estimate" 'BEGIN { printf "%.2f", m / e }')" "$mark"
done
exit "$over"

#!/usr/bin/env bash
# Renders the application icon packaging/valtrona.svg into the PNG sizes of
# the hicolor icon theme under packaging/icons/, and refreshes
# packaging/valtrona.png, the 256 px copy built into the window program.
# The PNGs are committed, so a build needs no SVG renderer; run this again
# after changing the SVG. Needs rsvg-convert (Debian: librsvg2-bin).
set -euo pipefail
cd "$(dirname "$0")/../packaging"

sizes=(16 22 24 32 48 64 128 256)
for size in "${sizes[@]}"; do
    dir="icons/${size}x${size}/apps"
    mkdir -p "$dir"
    rsvg-convert --width "$size" --height "$size" --keep-aspect-ratio \
        --output "$dir/valtrona.png" valtrona.svg
done
cp icons/256x256/apps/valtrona.png valtrona.png
echo "packaging/icons: ${sizes[*]} px"

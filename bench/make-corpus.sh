#!/usr/bin/env bash
# Builds the benchmark corpus: natural-looking photographs from 12 to 40
# megapixels, written as camera-like JPEGs (quality 92, 4:2:0 chroma).
# Each picture layers smooth noise of several scales (sky, hills, foliage,
# grain) over slowly drifting colour, so the JPEG coder has as much detail to
# chew on as in a real photo. Usage: bench/make-corpus.sh DIR
set -euo pipefail
dir="${1:?usage: make-corpus.sh DIR}"
mkdir -p "$dir"
work=$(mktemp -d "${TMPDIR:-/tmp}/valtrona-corpus.XXXXXX")
trap 'rm -rf "$work"' EXIT

# width height seed
sizes=(
  "4000 3000 11"   # 12 MP
  "4896 3264 12"   # 16 MP
  "3456 5184 13"   # 18 MP, portrait
  "6000 4000 14"   # 24 MP
  "7008 4672 15"   # 33 MP
  "7728 5152 16"   # 40 MP
)

for entry in "${sizes[@]}"; do
    read -r w h seed <<<"$entry"
    out="$dir/photo-${w}x${h}.jpg"
    [ -s "$out" ] && continue
    v() { vips "$@"; }
    v perlin "$work/p1.v" "$w" "$h" --cell-size 900 --seed "$seed"
    v perlin "$work/p2.v" "$w" "$h" --cell-size 140 --seed $((seed + 100))
    v perlin "$work/p3.v" "$w" "$h" --cell-size 18 --seed $((seed + 200))
    v worley "$work/w.v" "$w" "$h" --cell-size 40 --seed $((seed + 300))
    v gaussnoise "$work/g.v" "$w" "$h" --mean 0 --sigma 5 --seed $((seed + 400))
    v perlin "$work/c1.v" "$w" "$h" --cell-size 1600 --seed $((seed + 500))
    v perlin "$work/c2.v" "$w" "$h" --cell-size 1100 --seed $((seed + 600))
    # luminance: 114 + 60 p1 + 30 p2 + 16 p3 + 0.3 worley + grain
    v linear "$work/p1.v" "$work/a.v" 60 114
    v linear "$work/p2.v" "$work/b.v" 30 0
    v linear "$work/p3.v" "$work/c.v" 16 0
    v linear "$work/w.v" "$work/d.v" 0.3 0
    v sum "$work/a.v $work/b.v $work/c.v $work/d.v $work/g.v" "$work/l.v"
    # colour drifts slowly across the frame
    v linear "$work/c1.v" "$work/r1.v" 45 0
    v linear "$work/c2.v" "$work/g1.v" 20 0
    v linear "$work/c1.v" "$work/b1.v" 40 0
    v add "$work/l.v" "$work/r1.v" "$work/r.v"
    v add "$work/l.v" "$work/g1.v" "$work/gg.v"
    v subtract "$work/l.v" "$work/b1.v" "$work/bb.v"
    v bandjoin "$work/r.v $work/gg.v $work/bb.v" "$work/rgb.v"
    v cast "$work/rgb.v" "$work/u.v" uchar
    v copy "$work/u.v" "$work/s.v" --interpretation srgb
    v jpegsave "$work/s.v" "$out" --Q 92 --subsample-mode on
    rm -f "$work"/*.v
    echo "corpus: $out ($(du -h "$out" | cut -f1))"
done

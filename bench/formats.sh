#!/usr/bin/env bash
# What the output formats cost: valtrona-cli fits the same photos into a box
# and writes JPEG, WebP and AVIF, all with quality 85, in one run; throughput,
# CPU, file size and PSNR of each format as ratios against JPEG.
#
# Usage: bench/formats.sh        (build valtrona-cli first)
# Environment:
#   VALTRONA_CLI  the program to time (default: build/src/cli/valtrona-cli)
#   BENCH_DIR     corpus and outputs (default: $TMPDIR/valtrona-bench)
#   REPEAT        timed rounds per format, taking turns; the median counts (default 3)
#   COPIES        how often each corpus photo is in the batch (default 3)
#   BOX           the box the photos are fitted into (default 1024x768)
#   JOBS          valtrona-cli --jobs (default: its own, the number of cores)
#
# Needs libvips-tools, imagemagick (compare) and GNU time.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
cli=${VALTRONA_CLI:-$root/build/src/cli/valtrona-cli}
work=${BENCH_DIR:-${TMPDIR:-/tmp}/valtrona-bench}
repeat=${REPEAT:-3}
copies=${COPIES:-3}
box=${BOX:-1024x768}
gnutime=/usr/bin/time

for tool in "$cli" vips vipsheader compare "$gnutime"; do
    command -v "$tool" >/dev/null || { echo "missing: $tool" >&2; exit 2; }
done

"$root/bench/make-corpus.sh" "$work/corpus"

batch="$work/formats-batch"
rm -rf "$batch"
mkdir -p "$batch"
for ((c = 1; c <= copies; c++)); do
    for photo in "$work/corpus"/*.jpg; do
        ln -s "$photo" "$batch/$(basename "$photo" .jpg)-$c.jpg"
    done
done
files=("$batch"/*.jpg)
count=${#files[@]}

settings="$work/formats.ini"
printf '[JPG]\r\nPRZ=85\r\nINT=7\r\nSMT=4\r\nPXL=2\r\nCMP=2\r\n' > "$settings"

formats=(jpg webp avif)

# round FORMAT: one timed run; appends "wall user sys peakKiB" to
# $work/formats-time-FORMAT.all and leaves the output in $work/formats-out-FORMAT.
round() {
    local format=$1 out="$work/formats-out-$1" stats="$work/formats-time-$1"
    rm -rf "$out"
    mkdir -p "$out"
    sync
    "$gnutime" -f '%e %U %S %M' -o "$stats" \
        "$cli" --settings "$settings" --style 4 --width "${box%x*}" --height "${box#*x}" --width-unit px \
        --height-unit px --format "$format" --out "$out" ${JOBS:+--jobs "$JOBS"} "${files[@]}" > /dev/null
    tail -n 1 "$stats" >> "$stats.all"
}

# median FORMAT: "wall cpu peakKiB" of the median round by wall time.
median() {
    sort -n "$work/formats-time-$1.all" |
        awk -v n="$repeat" 'NR == int((n + 1) / 2) { printf "%s %.2f %s\n", $1, $2 + $3, $4 }'
}

echo "Corpus: $count photos (${copies}x $(ls "$work/corpus" | wc -l) distinct), $(nproc) cores," \
     "$repeat rounds, median round shown"
echo "Job: fit into $box, quality 85, valtrona-cli ${JOBS:+--jobs $JOBS}"
echo "Load average before the run: $(cut -d ' ' -f 1-3 /proc/loadavg)"
for format in "${formats[@]}"; do : > "$work/formats-time-$format.all"; done
for ((r = 1; r <= repeat; r++)); do
    for format in "${formats[@]}"; do round "$format"; done
done
echo "Load average after the run: $(cut -d ' ' -f 1-3 /proc/loadavg)"
echo

# Output pixels of one round (the same for every format).
outputMegapixels=$(for f in "$work/formats-out-jpg"/*.jpg; do
    echo "$(vipsheader -f width "$f") $(vipsheader -f height "$f")"
done | awk '{ s += $1 * $2 } END { printf "%.3f", s / 1e6 }')

# PSNR against a Lanczos-3 resample of the whole photo to the output's size,
# averaged over the distinct photos. AVIF is decoded by libvips: ImageMagick's
# reader gets its colours wrong.
psnrOf() {
    local format=$1 sum=0 n=0 photo name out w h W H ref decoded value
    for photo in "$work/corpus"/*.jpg; do
        name=$(basename "$photo" .jpg)
        out="$work/formats-out-$format/$name-1.$format"
        # (The AVIF reader warns about the colour description it skips.)
        w=$(vipsheader -f width "$out" 2>/dev/null); h=$(vipsheader -f height "$out" 2>/dev/null)
        W=$(vipsheader -f width "$photo"); H=$(vipsheader -f height "$photo")
        ref="$work/formats-ref-$name-${w}x$h.png"
        if [ ! -s "$ref" ]; then
            vips resize "$photo" "$ref" "$(awk -v a="$w" -v b="$W" 'BEGIN { printf "%.10f", a / b }')" \
                --vscale "$(awk -v a="$h" -v b="$H" 'BEGIN { printf "%.10f", a / b }')" --kernel lanczos3
        fi
        decoded="$work/formats-decoded.png"
        vips copy "$out" "$decoded" 2>/dev/null
        value=$(compare -metric PSNR "$decoded" "$ref" null: 2>&1 || true)
        sum=$(awk -v s="$sum" -v v="${value%% *}" 'BEGIN { print s + v }')
        n=$((n + 1))
    done
    awk -v s="$sum" -v n="$n" 'BEGIN { printf "%.2f", s / n }'
}

declare -A wall cpu peak bytes psnr
for format in "${formats[@]}"; do
    read -r w c m < <(median "$format")
    wall[$format]=$w; cpu[$format]=$c; peak[$format]=$m
    bytes[$format]=$(du -cb "$work/formats-out-$format"/*."$format" | tail -n 1 | cut -f 1)
    psnr[$format]=$(psnrOf "$format")
done

echo "Output: $count files, $outputMegapixels megapixels in all"
printf '%-6s %9s %11s %9s %10s %9s %8s | %8s %8s %8s %14s\n' format images/s "CPU s/img" "peak MiB" "KB/file" \
    "PSNR dB" "" "speed" "CPU" "size" "+CPU ms/MP out"
for format in "${formats[@]}"; do
    awk -v f="$format" -v n="$count" -v w="${wall[$format]}" -v c="${cpu[$format]}" -v m="${peak[$format]}" \
        -v b="${bytes[$format]}" -v p="${psnr[$format]}" -v mp="$outputMegapixels" \
        -v w0="${wall[jpg]}" -v c0="${cpu[jpg]}" -v b0="${bytes[jpg]}" \
        'BEGIN { printf "%-6s %9.2f %11.3f %9.1f %10.1f %9s %8s | %7.2fx %7.2fx %7.2fx %14.1f\n",
                 f, n / w, c / n, m / 1024, b / n / 1024, p, "", w0 / w, c / c0, b / b0, (c - c0) / mp * 1000 }'
done
echo
echo "speed: JPEG's wall time / the format's (below 1: slower); CPU and size: the format's / JPEG's;"
echo "+CPU ms/MP out: CPU time beyond JPEG's per megapixel written."

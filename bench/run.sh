#!/usr/bin/env bash
# Throughput, peak memory and output quality of valtrona-cli against
# vipsthumbnail and ImageMagick's convert, all doing the same job on the same
# corpus in one run: fit every photo into 1024 x 768, JPEG quality 85.
#
# Usage: bench/run.sh            (build valtrona-cli first)
# Environment:
#   VALTRONA_CLI  the program to time (default: build/src/cli/valtrona-cli)
#   BENCH_DIR     corpus and outputs (default: $TMPDIR/valtrona-bench)
#   REPEAT        timed rounds per tool, taking turns; the median counts (default 3)
#   COPIES        how often each corpus photo is in the batch (default 3)
#   SKIP_MAGICK   set to 1 to leave ImageMagick out (it is the slow one)
#   BENCH_NICE    niceness for the timed runs, e.g. -10 on a machine shared
#                 with builds (needs root; default: unchanged)
#
# Needs libvips-tools, imagemagick and time (GNU time for peak memory).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
cli=${VALTRONA_CLI:-$root/build/src/cli/valtrona-cli}
work=${BENCH_DIR:-${TMPDIR:-/tmp}/valtrona-bench}
repeat=${REPEAT:-3}
copies=${COPIES:-3}
magick=/usr/bin/convert
gnutime=/usr/bin/time

for tool in "$cli" vips vipsthumbnail "$gnutime"; do
    command -v "$tool" >/dev/null || { echo "missing: $tool" >&2; exit 2; }
done
if [ "${SKIP_MAGICK:-0}" != 1 ] && [ ! -x "$magick" ]; then
    echo "missing: $magick (install imagemagick or set SKIP_MAGICK=1)" >&2
    exit 2
fi

"$root/bench/make-corpus.sh" "$work/corpus"

# The batch: every corpus photo COPIES times under its own name.
batch="$work/batch"
rm -rf "$batch"
mkdir -p "$batch"
for ((c = 1; c <= copies; c++)); do
    for photo in "$work/corpus"/*.jpg; do
        ln -s "$photo" "$batch/$(basename "$photo" .jpg)-$c.jpg"
    done
done
files=("$batch"/*.jpg)
count=${#files[@]}
megapixels=$(for f in "$work/corpus"/*.jpg; do vipsheader -f width "$f"; vipsheader -f height "$f"; done |
    paste - - | awk '{ s += $1 * $2 } END { printf "%.0f", s / NR / 1e6 }')

# The settings the window seeds: quality 85, best downscale.
settings="$work/bench.ini"
printf '[JPG]\r\nPRZ=85\r\nINT=7\r\nSMT=4\r\nPXL=2\r\nCMP=2\r\n' > "$settings"

run_vipsthumbnail() { vipsthumbnail "${files[@]}" -s 1024x768 -o "$1/%s.jpg[Q=85]"; }
# Two single-threaded vipsthumbnail processes side by side, each on half the
# batch: what the machine's cores give when they are really free.
run_vipsthumbnail_pair() {
    local half=$(((${#files[@]} + 1) / 2))
    VIPS_CONCURRENCY=1 vipsthumbnail "${files[@]:0:half}" -s 1024x768 -o "$1/%s.jpg[Q=85]" &
    VIPS_CONCURRENCY=1 vipsthumbnail "${files[@]:half}" -s 1024x768 -o "$1/%s.jpg[Q=85]"
    wait
}
run_valtrona() {
    "$cli" --settings "$settings" --style 4 --width 1024 --height 768 --width-unit px \
        --height-unit px --format jpg --out "$1" "${files[@]}" > /dev/null
}
run_valtrona_one() {
    "$cli" --settings "$settings" --style 4 --width 1024 --height 768 --width-unit px \
        --height-unit px --format jpg --out "$1" --jobs 1 "${files[@]}" > /dev/null
}
run_magick() {
    local out=$1 f
    for f in "${files[@]}"; do
        "$magick" "$f" -resize 1024x768 -quality 85 "$out/$(basename "$f")"
    done
}

# round NAME: one timed run of run_NAME; appends "wall user sys peakKiB" to
# $work/time-NAME.all and leaves its output in $work/out-NAME.
round() {
    local name=$1 out="$work/out-$1" stats="$work/time-$1"
    rm -rf "$out"
    mkdir -p "$out"
    sync
    ${BENCH_NICE:+nice -n "$BENCH_NICE"} "$gnutime" -f '%e %U %S %M' -o "$stats" \
        bash -c "$(declare -f "run_$name"); $(declare -p files cli settings magick); run_$name '$out'"
    tail -n 1 "$stats" >> "$stats.all"
}

# median NAME: "wall cpu peakKiB" of the median round by wall time.
median() {
    sort -n "$work/time-$1.all" |
        awk -v n="$repeat" 'NR == int((n + 1) / 2) { printf "%s %.2f %s\n", $1, $2 + $3, $4 }'
}

echo "Corpus: $count photos (${copies}x $(ls "$work/corpus" | wc -l) distinct, about $megapixels MP each)," \
     "$(nproc) cores, $repeat rounds, median round shown"
echo "Job: fit into 1024x768, JPEG quality 85"
echo "Load average before the run: $(cut -d ' ' -f 1-3 /proc/loadavg)"
echo

declare -A wall cpu peak
tools=(vipsthumbnail vipsthumbnail_pair valtrona valtrona_one)
[ "${SKIP_MAGICK:-0}" != 1 ] && tools+=(magick)
# Rounds take turns between the tools, so a change in the machine's load
# falls on all of them alike.
for tool in "${tools[@]}"; do : > "$work/time-$tool.all"; done
for ((r = 1; r <= repeat; r++)); do
    for tool in "${tools[@]}"; do round "$tool"; done
done
echo "Load average after the run: $(cut -d ' ' -f 1-3 /proc/loadavg)"
echo
for tool in "${tools[@]}"; do
    read -r w c m < <(median "$tool")
    wall[$tool]=$w; cpu[$tool]=$c; peak[$tool]=$m
done

label() {
    case $1 in
        vipsthumbnail) echo "vipsthumbnail" ;;
        vipsthumbnail_pair) echo "2 x vipsthumbnail side by side" ;;
        valtrona) echo "valtrona-cli (default jobs: $(nproc))" ;;
        valtrona_one) echo "valtrona-cli --jobs 1" ;;
        magick) echo "ImageMagick convert" ;;
    esac
}

printf '%-36s %10s %12s %10s %12s %12s\n' tool images/s "CPU s/image" "peak MiB" "speed vs vt" "memory vs vt"
for tool in "${tools[@]}"; do
    awk -v name="$(label "$tool")" -v n="$count" -v w="${wall[$tool]}" -v c="${cpu[$tool]}" -v m="${peak[$tool]}" \
        -v w0="${wall[vipsthumbnail]}" -v m0="${peak[vipsthumbnail]}" \
        'BEGIN { printf "%-36s %10.2f %12.3f %10.1f %11.2fx %11.2fx\n", name, n / w, c / n, m / 1024, w0 / w, m / m0 }'
done

# ---- Quality: PSNR against a reference resample -----------------------------
# The reference decodes the whole photo and resamples it with Lanczos-3 to
# exactly the size each tool produced.
echo
echo "Quality: PSNR in dB against a full-resolution Lanczos-3 reference (higher is closer)"
quality_tools=()
for tool in "${tools[@]}"; do [ "$tool" != vipsthumbnail_pair ] && quality_tools+=("$tool"); done
printf '%-24s' photo
for tool in "${quality_tools[@]}"; do printf '%16s' "$tool"; done
echo
for photo in "$work/corpus"/*.jpg; do
    name=$(basename "$photo" .jpg)
    printf '%-24s' "$name"
    for tool in "${quality_tools[@]}"; do
        out="$work/out-$tool/$name-1.jpg"
        w=$(vipsheader -f width "$out"); h=$(vipsheader -f height "$out")
        W=$(vipsheader -f width "$photo"); H=$(vipsheader -f height "$photo")
        ref="$work/ref-$name-${w}x$h.png"
        if [ ! -s "$ref" ]; then
            vips resize "$photo" "$ref" "$(awk -v a="$w" -v b="$W" 'BEGIN { printf "%.10f", a / b }')" \
                --vscale "$(awk -v a="$h" -v b="$H" 'BEGIN { printf "%.10f", a / b }')" --kernel lanczos3
        fi
        psnr=$(compare -metric PSNR "$out" "$ref" null: 2>&1 || true)
        printf '%16s' "$(printf '%.2f' "${psnr%% *}")"
    done
    echo
done

# ---- Aliasing: fine line patterns downscaled -------------------------------
# 1-pixel lines every 3 pixels and a zone plate (rings up to the finest
# frequency) are shrunk to a quarter. A correct downscale turns detail finer
# than the output can hold into even grey: the standard deviation of the
# fine area stays small. Nearest-neighbour picking shows what aliasing
# (moire, false rings) looks like in the same numbers.
echo
echo "Aliasing: grey-level standard deviation of detail finer than the output can show (lower is better)"
pattern="$work/pattern"
mkdir -p "$pattern"
if [ ! -s "$pattern/lines.png" ]; then
    vips xyz "$pattern/xy.v" 4096 4096
    vips extract_band "$pattern/xy.v" "$pattern/x.v" 0
    vips remainder_const "$pattern/x.v" "$pattern/m.v" 3
    vips relational_const "$pattern/m.v" "$pattern/lines.v" equal 0
    vips copy "$pattern/lines.v" "$pattern/lines.png"
    vips zone "$pattern/z.v" 4096 4096
    vips linear "$pattern/z.v" "$pattern/z8.v" 127.5 127.5 --uchar
    vips copy "$pattern/z8.v" "$pattern/zone.png"
    rm -f "$pattern"/*.v
fi
deviation() { # FILE: deviation of the region given as x y w h
    local file=$1 x=$2 y=$3 w=$4 h=$5
    vips crop "$file" "$pattern/crop.v" "$x" "$y" "$w" "$h"
    vips colourspace "$pattern/crop.v" "$pattern/grey.v" b-w
    printf '%.1f' "$(vips deviate "$pattern/grey.v")"
}
printf '%-28s %12s %12s\n' method lines "zone plate"
for method in valtrona vipsthumbnail nearest; do
    for p in lines zone; do
        out="$pattern/$method-$p.png"
        case $method in
            valtrona)
                rm -rf "$pattern/v"
                "$cli" --settings "$settings" --style 2 --width 1024 --format png --out "$pattern/v" \
                    --jobs 1 "$pattern/$p.png" > /dev/null
                mv "$pattern/v/$p.png" "$out" ;;
            vipsthumbnail) vipsthumbnail "$pattern/$p.png" -s 1024 -o "$out" ;;
            nearest) vips resize "$pattern/$p.png" "$out" 0.25 --kernel nearest ;;
        esac
    done
    # lines: the whole picture; zone plate: the band at the left edge, where
    # the rings are finer than the output's pixel pitch.
    printf '%-28s %12s %12s\n' "$method" "$(deviation "$pattern/$method-lines.png" 0 0 1024 1024)" \
        "$(deviation "$pattern/$method-zone.png" 0 462 100 100)"
done

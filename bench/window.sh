#!/usr/bin/env bash
# The window against the command line on the same batch: the window program
# is opened with the photos under Xvfb with a window manager and driven by
# keyboard as a person does ("Weiter >" twice, by its mnemonic); its run is
# timed from the first caption with a percentage (the first file's turn)
# until the caption drops it again (the run has ended). The time from the
# key to that first caption (the X server's and the tool's input path) is
# printed beside it. valtrona-cli converts the same batch with the same
# settings, timed as a whole process. Both use one job per core. Prints each
# round and the median ratio window / cli.
#
# Usage: bench/window.sh         (build valtrona and valtrona-cli first)
# Environment:
#   BUILD_DIR   the build tree (default: build)
#   BENCH_DIR   corpus and outputs (default: $TMPDIR/valtrona-bench)
#   REPEAT      rounds, taking turns (default 3)
#   COPIES      how often each corpus photo is in the batch (default 8: 48 photos)
#
# Needs xvfb, openbox, xdotool, x11-utils (xprop) and libvips-tools.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
window_program=$build/src/app/valtrona
cli=$build/src/cli/valtrona-cli
work=${BENCH_DIR:-${TMPDIR:-/tmp}/valtrona-bench}
repeat=${REPEAT:-3}
copies=${COPIES:-8}

for tool in "$window_program" "$cli" Xvfb openbox xdotool xprop vips; do
    command -v "$tool" >/dev/null || { echo "missing: $tool" >&2; exit 2; }
done

"$root/bench/make-corpus.sh" "$work/corpus"
batch="$work/window-batch"
rm -rf "$batch"
mkdir -p "$batch"
for ((c = 1; c <= copies; c++)); do
    for photo in "$work/corpus"/*.jpg; do
        ln -s "$photo" "$batch/$(basename "$photo" .jpg)-$c.jpg"
    done
done
files=("$batch"/*.jpg)
count=${#files[@]}

# The window keeps its settings beside its executable: a copy of it in the
# work folder gets a settings file of its own, preset to the job.
app="$work/window-app"
rm -rf "$app"
mkdir -p "$app"
cp "$window_program" "$app/valtrona"
settings="$app/valtrona.ini"
write_settings() {
    printf '[Last]\r\nStyle=4\r\nWidth=1024\r\nHeight=768\r\nWU=0\r\nHU=0\r\nPath=%s\r\n\r\n' "$1" > "$settings"
    printf '[JPG]\r\nPRZ=85\r\nINT=7\r\nSMT=4\r\nPXL=2\r\nCMP=2\r\n' >> "$settings"
}

display=:$((90 + RANDOM % 100))
Xvfb "$display" -screen 0 1600x1000x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
export DISPLAY=$display
sleep 1
openbox >/dev/null 2>&1 &
wm=$!
trap 'kill $wm $xvfb 2>/dev/null || true' EXIT
sleep 1

# One window round: prints the seconds from the starting key to the end.
# The caption is watched by one `xprop -spy`, stamped by the shell itself,
# so the watching costs the run no processes of its own.
window_round() {
    local out=$1
    rm -rf "$out"
    write_settings "$out"
    "$app/valtrona" "${files[@]}" >/dev/null 2>&1 &
    local pid=$!
    local id
    id=$(xdotool search --sync --onlyvisible --pid "$pid" --name '^Valtrona$' | head -1)
    xdotool windowactivate --sync "$id"
    # Each file's row is measured when the list is filled; wait for it.
    sleep 2
    xdotool key --clearmodifiers alt+w
    sleep 0.5
    # xprop reports every caption change into a pipe; reading it blocks, so
    # the watching costs the run nothing.
    local captions="$work/captions.fifo"
    rm -f "$captions"
    mkfifo "$captions"
    xprop -id "$id" -spy WM_NAME > "$captions" &
    local spy=$!
    exec 3< "$captions"
    IFS= read -r -u 3 line # the caption as it stands
    # The caption carries the percentage while the run goes on and drops it
    # at the end.
    xdotool key --clearmodifiers alt+w
    local key=$EPOCHREALTIME start="" end=""
    while IFS= read -r -u 3 line; do
        case "$line" in
        *%*) [ -n "$start" ] || start=$EPOCHREALTIME ;;
        *'"Valtrona"') if [ -n "$start" ]; then end=$EPOCHREALTIME; break; fi ;;
        esac
    done
    exec 3<&-
    kill "$spy" 2>/dev/null || true
    rm -f "$captions"
    local written
    written=$(find "$out" -name '*.jpg' | wc -l)
    [ "$written" -eq "$count" ] || echo "window wrote $written of $count" >&2
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
    awk -v k="$key" -v a="$start" -v b="$end" 'BEGIN { print b - a, a - k }'
}

cli_round() {
    local out=$1
    rm -rf "$out"
    write_settings "$out"
    local start end
    start=$EPOCHREALTIME
    "$cli" --settings "$settings" --style 4 --width 1024 --height 768 --width-unit px --height-unit px \
        --format jpg --out "$out" "${files[@]}" >/dev/null
    end=$EPOCHREALTIME
    awk -v a="$start" -v b="$end" 'BEGIN { print b - a }'
}

echo "batch: $count photos, $(nproc) cores"
ratios=()
for ((r = 1; r <= repeat; r++)); do
    read -r w latency < <(window_round "$work/out-window")
    c=$(cli_round "$work/out-cli")
    ratio=$(awk -v w="$w" -v c="$c" 'BEGIN { printf "%.3f", w / c }')
    ratios+=("$ratio")
    printf 'round %d: window %.2f s (key to first file %.3f s), cli %.2f s, window/cli %.3f\n' \
        "$r" "$w" "$latency" "$c" "$ratio"
done
median=$(printf '%s\n' "${ratios[@]}" | sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }')
echo "median window/cli: $median"

#!/usr/bin/env bash
# Takes a screenshot of the window program with a few photos loaded: starts
# a virtual X server with a window manager, makes the sample photos,
# loads their folder through "Verzeichnis laden", selects one row so the
# preview shows, and saves the window with its frame as a PNG.
# Usage: scripts/screenshot.sh [program] [output.png]
#   program  default build/src/app/valtrona
#   output   default packaging/screenshots/main-window.png
# Needs Xvfb, openbox, xdotool and ImageMagick (scripts/install-deps.sh).
set -euo pipefail
cd "$(dirname "$0")/.."

program="$(realpath "${1:-build/src/app/valtrona}")"
output="$(realpath -m "${2:-packaging/screenshots/main-window.png}")"
mkdir -p "$(dirname "$output")"

work="$(mktemp -d)"
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    rm -rf "$work"
}
trap cleanup EXIT

# A free display number: the first without a lock file.
display=90
while [ -e "/tmp/.X${display}-lock" ]; do display=$((display + 1)); done
export DISPLAY=":${display}"
Xvfb "$DISPLAY" -screen 0 1280x900x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
pids+=($!)
for _ in $(seq 50); do xdpyinfo >/dev/null 2>&1 && break; sleep 0.1; done
openbox >"$work/openbox.log" 2>&1 &
pids+=($!)

photos="$work/Urlaub"
scripts/make-photos.sh "$photos"

# A home of its own and a copy of the program (its settings file lives
# beside it), so no settings of the person running this leak in or change.
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config"
mkdir -p "$XDG_CONFIG_HOME" "$work/bin"
cp "$program" "$work/bin/valtrona"
"$work/bin/valtrona" >"$work/program.log" 2>&1 &
pids+=($!)

window=""
for _ in $(seq 100); do
    window="$(xdotool search --onlyvisible --class valtrona 2>/dev/null | head -n1 || true)"
    [ -n "$window" ] && break
    sleep 0.1
done
if [ -z "$window" ]; then
    echo "screenshot.sh: the window did not appear" >&2
    cat "$work/program.log" >&2
    exit 1
fi
xdotool windowactivate --sync "$window"
sleep 0.5
xdotool key alt+v                      # "Verzeichnis laden"
sleep 1.5
xdotool type --delay 10 "$photos"
xdotool key Return
sleep 2

# The second row, so the preview shows a photo.
read -r x y < <(xwininfo -id "$window" | awk '/Absolute upper-left X/ {x=$NF} /Absolute upper-left Y/ {y=$NF} END {print x, y}')
xdotool mousemove $((x + 90)) $((y + 102)) click 1
sleep 2
xdotool mousemove 5 5
sleep 0.5
import -frame -window "$window" "$output"
echo "$output"

#!/usr/bin/env bash
# Takes a screenshot of the window program with a few photos loaded: starts
# a virtual X server with a window manager, makes seven landscape photos,
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

# Seven photos: a sky gradient over a textured ground, and one portrait.
photos="$work/Urlaub"
mkdir -p "$photos"
skies=('#3d7bd1-#dcefff' '#e8874a-#ffe2b0' '#5b8fd6-#f0f6ff' '#2a4d8f-#9cc3f0' '#c96a8a-#ffd9c0' '#4f9ad8-#e6f4ff')
grounds=('#2f6a22,#a4c46a' '#6a4a22,#d8b47a' '#1f5b4a,#8fc4a8' '#4d6a1e,#c8d890' '#5b3a2a,#c89a70' '#1f4f7a,#7fb0d0')
i=0
for number in 4711 4712 4715 4723 4730 4731; do
    convert -size 1600x720 "gradient:${skies[$i]}" \
        \( -size 1600x480 -seed "$number" plasma:fractal -colorspace Gray -blur 0x1.5 \
           -auto-level -colorspace sRGB +level-colors "${grounds[$i]}" \) -append \
        -fill '#ffe27a' -draw "circle $((300 + i * 200)),$((180 + i * 20)) $((300 + i * 200)),$((240 + i * 20))" \
        -quality 90 "$photos/IMG_${number}.jpg"
    i=$((i + 1))
done
convert -size 1200x1600 gradient:'#1d3b6e-#f3c98b' -fill '#fff3c4' \
    -draw 'circle 600,900 600,990' -quality 90 "$photos/IMG_4740.jpg"

# A home of its own, so no settings of the person running this leak in.
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config"
mkdir -p "$XDG_CONFIG_HOME"
"$program" >"$work/program.log" 2>&1 &
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

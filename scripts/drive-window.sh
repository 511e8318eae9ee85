#!/usr/bin/env bash
# Drives the real window through one whole job with the keyboard only, as a
# user would on a Linux desktop, and saves a screenshot at every step:
# start with a folder of photos, Enter to the parameters, Tab to the target
# folder and type it, tick "Quelldateien nach Bearbeitung löschen", Tab to
# "Weiter >" and press Enter, then stray Enter and Space keys at once (they
# must do nothing beyond the run), wait for the end, go back with Alt+Z to
# the list (its rows now greyed: the sources are in the trash), look at a
# row's tooltip, the settings dialog and its help box, the question of
# "Alle entfernen", and close with Alt+S.
# It does this three times: at 100 %, at 200 % (QT_SCALE_FACTOR=2) and on a
# dark palette (VALTRONA_PALETTE=dark), each in a fresh home and with its
# own copy of the program, so no settings of the person running it are used
# or changed. It fails when a step does not do what it should.
# Usage: scripts/drive-window.sh [program] [output-folder]
#   program        default build/src/app/valtrona
#   output-folder  default /tmp/valtrona-drive (one subfolder per variant)
# Needs Xvfb, openbox, xdotool and ImageMagick (scripts/install-deps.sh).
set -euo pipefail
cd "$(dirname "$0")/.."

program="$(realpath "${1:-build/src/app/valtrona}")"
output="$(realpath -m "${2:-/tmp/valtrona-drive}")"
mkdir -p "$output"

work="$(mktemp -d)"
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    rm -rf "$work"
}
trap cleanup EXIT

fail() {
    echo "drive-window.sh: $*" >&2
    exit 1
}

# A free display number: the first without a lock file. The screen holds
# the window at twice its size.
display=90
while [ -e "/tmp/.X${display}-lock" ]; do display=$((display + 1)); done
export DISPLAY=":${display}"
Xvfb "$DISPLAY" -screen 0 2400x1500x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
pids+=($!)
for _ in $(seq 50); do xdpyinfo >/dev/null 2>&1 && break; sleep 0.1; done
openbox >"$work/openbox.log" 2>&1 &
pids+=($!)
sleep 0.5

# Seven photos and five more sets of them under other names: enough work
# that the stray keys come while the run goes on. Each variant gets a copy.
samples="$work/samples"
scripts/make-photos.sh "$samples"
for set in 5 6 7 8 9; do
    for photo in "$samples"/IMG_47*.jpg; do
        name="$(basename "$photo")"
        cp "$photo" "$samples/IMG_${set}${name#IMG_4}"
    done
done
photoCount="$(find "$samples" -name '*.jpg' | wc -l)"

# Waits up to $1 tenths of a second for the command in the other arguments.
waitFor() {
    local tenths="$1"
    shift
    for _ in $(seq "$tenths"); do
        "$@" && return 0
        sleep 0.1
    done
    return 1
}

activeTitle() { xdotool getactivewindow getwindowname 2>/dev/null || true; }
titleIs() { [ "$(activeTitle)" = "$1" ]; }

# Saves the active window with its frame.
shot() {
    sleep 0.4
    import -frame -window "$(xdotool getactivewindow)" "$dir/$1.png"
    echo "$dir/$1.png"
}

# Moves the pointer over a point of the main window, in its own pixels.
pointAt() {
    local x y
    read -r x y < <(xwininfo -id "$window" | awk '/Absolute upper-left X/ {x=$NF} /Absolute upper-left Y/ {y=$NF} END {print x, y}')
    xdotool mousemove $((x + $1 * scale)) $((y + $2 * scale))
}

drive() {
    local variant="$1"
    shift
    dir="$output/$variant"
    rm -rf "$dir"
    mkdir -p "$dir"
    scale=1
    for setting in "$@"; do
        [ "$setting" = QT_SCALE_FACTOR=2 ] && scale=2
    done

    # Its own copy of the program: the settings file lives beside it.
    local bin="$work/$variant/bin" target="$work/$variant/Verkleinert" photos="$work/$variant/Urlaub"
    local trash="$work/$variant/home/.local/share/Trash/files"
    mkdir -p "$bin" "$work/$variant/home/.config"
    cp "$program" "$bin/valtrona"
    cp -r "$samples" "$photos"
    HOME="$work/$variant/home" XDG_CONFIG_HOME="$work/$variant/home/.config" \
        XDG_DATA_HOME="$work/$variant/home/.local/share" \
        env "$@" "$bin/valtrona" "$photos" >"$dir/program.log" 2>&1 &
    local pid=$!
    pids+=("$pid")

    window=""
    waitFor 100 bash -c 'xdotool search --onlyvisible --class valtrona >/dev/null 2>&1' ||
        fail "$variant: the window did not appear"
    window="$(xdotool search --onlyvisible --class valtrona | head -n1)"
    xdotool windowactivate --sync "$window"
    xdotool mousemove 5 5
    shot 01-card1-photos

    xdotool key Return                   # the list has the focus: on to card 2
    shot 02-card2-parameters

    # Ten fields on from the first: "Zielverzeichnis".
    xdotool key --delay 40 Tab Tab Tab Tab Tab Tab Tab Tab Tab Tab
    xdotool key ctrl+a
    xdotool type --delay 5 "$target"
    shot 03-card2-target

    # Past "..." and "Verzeichnisstruktur beibehalten" to tick the box that
    # moves the sources to the trash once converted.
    xdotool key --delay 40 Tab Tab Tab space
    # Six more: two boxes, "Reset", "Konfiguration", "< Zurück", "Weiter >".
    xdotool key --delay 40 Tab Tab Tab Tab Tab Tab
    shot 04-weiter-focused
    xdotool key Return                   # the run starts
    xdotool key --delay 20 Return space Return space
    shot 05-card3-running

    waitFor 600 bash -c "[ \"\$(find '$target' -name '*.jpg' 2>/dev/null | wc -l)\" -ge $photoCount ]" ||
        fail "$variant: the run did not write $photoCount photos"
    waitFor 100 titleIs Valtrona || fail "$variant: the title did not come back after the run"
    kill -0 "$pid" 2>/dev/null || fail "$variant: the stray keys ended the program"
    xdotool key --delay 20 Return space
    shot 06-card3-done

    xdotool key alt+z
    shot 07-back-card2
    xdotool key alt+z
    shot 08-back-card1
    # The first row's tooltip names the whole path.
    pointAt 90 84
    sleep 1.5
    local x y w h
    read -r x y w h < <(xwininfo -id "$window" | awk '/Absolute upper-left X/ {x=$NF} /Absolute upper-left Y/ {y=$NF}
        /Width:/ {w=$NF} /Height:/ {h=$NF} END {print x, y, w, h}')
    import -window root -crop "$((w / 2 + 300 * scale))x$((h / 3))+${x}+${y}" "$dir/09-row-tooltip.png"
    echo "$dir/09-row-tooltip.png"
    xdotool mousemove 5 5

    xdotool key alt+k                    # "Konfiguration"
    waitFor 50 titleIs "Konfiguration..." || fail "$variant: no settings dialog"
    shot 10-settings
    # "Speichern", two lines, then the "?" of "GDI Interpolation".
    xdotool key --delay 40 Tab Tab Tab Tab
    xdotool key space
    waitFor 50 titleIs "GDI Parameterhilfe" || fail "$variant: no help box"
    shot 11-help-box
    xdotool key Return
    waitFor 50 titleIs "Konfiguration..." || fail "$variant: the help box did not close"
    xdotool key Escape
    waitFor 50 bash -c '[ "$(xdotool getactivewindow getwindowname)" != "Konfiguration..." ]' ||
        fail "$variant: the settings dialog did not close"

    xdotool key alt+a                    # "Alle entfernen" asks first
    waitFor 50 titleIs Entfernen || fail "$variant: no question before emptying the list"
    shot 12-remove-all-question
    xdotool key Escape                   # No: the list stays

    xdotool key alt+s                    # "Schließen"
    waitFor 100 bash -c "! kill -0 $pid 2>/dev/null" || fail "$variant: Alt+S did not close the program"
    local written
    written="$(find "$target" -name '*.jpg' | wc -l)"
    [ "$written" -eq "$photoCount" ] || fail "$variant: $written of $photoCount photos written"
    local trashed
    trashed="$(find "$trash" -name '*.jpg' 2>/dev/null | wc -l)"
    [ "$trashed" -eq "$photoCount" ] || fail "$variant: $trashed of $photoCount sources in the trash"
    echo "$variant: $written photos written, $trashed sources in the trash, closed by Alt+S"
}

drive normal
drive scaled QT_SCALE_FACTOR=2
drive dark VALTRONA_PALETTE=dark

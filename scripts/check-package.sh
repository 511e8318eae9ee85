#!/usr/bin/env bash
# Installs a built Debian package on this machine and checks the installed
# programs and files: the command line's help, one real conversion, and the
# desktop entry and AppStream metadata through their validators. A package
# that was not installed before is removed again at the end.
# Usage: scripts/check-package.sh path/to/valtrona_<version>_<arch>.deb
# Needs root (or sudo), like scripts/install-deps.sh.
set -euo pipefail

deb="$(realpath "${1:?usage: scripts/check-package.sh DEB}")"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive

work="$(mktemp -d)"
installedBefore=false
if dpkg-query -W -f '${Status}' valtrona 2>/dev/null | grep -q "install ok installed"; then
    installedBefore=true
fi
cleanup() {
    rm -rf "$work"
    if [ "$installedBefore" = false ]; then
        $SUDO apt-get purge -y -qq valtrona >/dev/null 2>&1 || true
    fi
}
trap cleanup EXIT

fail() {
    echo "check-package: $*" >&2
    exit 1
}

echo "== $(basename "$deb")"
dpkg-deb --field "$deb" Package Version Depends
# --reinstall, so a package of the same version left from an earlier run is
# replaced by this one.
$SUDO apt-get install -y -qq --reinstall "$deb" >"$work/install.log" 2>&1 \
    || { cat "$work/install.log" >&2; fail "apt-get could not install the package"; }

echo "== /usr/bin/valtrona-cli --help"
/usr/bin/valtrona-cli --help >"$work/help.txt"
grep -q -- "--format" "$work/help.txt" || fail "the help text lacks --format"
head -n 1 "$work/help.txt"

# The completion offers exactly the options the program knows.
completion=/usr/share/bash-completion/completions/valtrona-cli
helpOptions="$(grep -oE '^  --[a-z-]+' "$work/help.txt" | tr -d ' ' | sort)"
completionOptions="$(sed -n "/local options='/,/'/p" "$completion" | grep -oE -- '--[a-z-]+' | sort)"
[ "$helpOptions" = "$completionOptions" ] \
    || fail "the bash completion's options differ from --help: $(diff <(echo "$helpOptions") <(echo "$completionOptions") | tr '\n' ' ')"
# And every format the help names.
for format in $(grep -oE -- '--format [a-z|]+' "$work/help.txt" | cut -d ' ' -f 2 | tr '|' ' '); do
    sed -n '/--format)/,/;;/p' "$completion" | grep -qw -- "$format" \
        || fail "the bash completion does not offer --format $format"
done

echo "== one conversion with /usr/bin/valtrona-cli"
# A settings file of its own, so nothing of this machine's settings leaks in.
vips black "$work/photo.jpg" 1600 1200 --bands 3
(cd "$work" && /usr/bin/valtrona-cli --settings "$work/none.ini" \
    --style 2 --width 400 --format png --out "$work/out" photo.jpg)
[ -f "$work/out/photo.png" ] || fail "no output file $work/out/photo.png"
size="$(vipsheader -f width "$work/out/photo.png")x$(vipsheader -f height "$work/out/photo.png")"
[ "$size" = "400x300" ] || fail "the output is $size, expected 400x300"
echo "photo.jpg 1600x1200 -> out/photo.png $size"

echo "== desktop-file-validate /usr/share/applications/valtrona.desktop"
desktop-file-validate /usr/share/applications/valtrona.desktop >"$work/desktop.txt" 2>&1 \
    || { cat "$work/desktop.txt" >&2; fail "the desktop entry is invalid"; }
# Warnings and hints leave the exit status at 0; they count here too.
if [ -s "$work/desktop.txt" ]; then cat "$work/desktop.txt" >&2; fail "the desktop entry has warnings"; fi
echo "no errors, no warnings"

metainfo=/usr/share/metainfo/localhost.valtrona.Valtrona.metainfo.xml
echo "== appstreamcli validate --no-net $metainfo"
appstreamcli validate --no-net "$metainfo"

for file in /usr/share/man/man1/valtrona-cli.1.gz \
            /usr/share/icons/hicolor/256x256/apps/valtrona.png \
            /usr/share/icons/hicolor/scalable/apps/valtrona.svg \
            "$completion"; do
    [ -f "$file" ] || fail "missing $file"
done
echo "package checks passed"

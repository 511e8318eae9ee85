#!/usr/bin/env bash
# Installs every build, test and tool dependency from Debian's packages.
# Safe to run again; needs root (or sudo).
set -euo pipefail

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

packages=(
  build-essential cmake ninja-build pkg-config ccache
  clang libclang-rt-14-dev
  qt6-base-dev qt6-base-dev-tools qt6-translations-l10n qt6-l10n-tools
  qt6-image-formats-plugins
  libgl-dev
  libvips-dev libvips-tools libglib2.0-dev
  libgtest-dev libgmock-dev
  libimage-exiftool-perl
  xvfb xauth x11-apps x11-utils imagemagick
  openbox xdotool                 # scripts/screenshot.sh
  dpkg-dev file desktop-file-utils appstream librsvg2-bin   # packaging
  fonts-dejavu-core
  time
)

export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${packages[@]}"

#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian 12 packages Morvane needs to build, test and run.
# Does nothing when they are all present, so it is cheap to call every time.
set -euo pipefail

PACKAGES=(
    build-essential cmake ninja-build ccache pkg-config clang
    qt6-base-dev qt6-base-dev-tools libqt6opengl6-dev libqt6svg6-dev
    libgl-dev
    libpugixml-dev libmagick++-dev libbenchmark-dev
    xvfb xauth fonts-dejavu-core desktop-file-utils shared-mime-info
)

missing=()
for p in "${PACKAGES[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

echo "Installing missing packages: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then
    SUDO="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y --no-install-recommends "${missing[@]}"

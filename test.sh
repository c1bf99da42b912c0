#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds Morvane into build/ and runs every test.
set -euo pipefail
cd "$(dirname "$0")"

./scripts/deps.sh

BUILD_DIR=${MORVANE_BUILD_DIR:-build}
JOBS=${MORVANE_JOBS:-2}

cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$BUILD_DIR" -j"$JOBS"

export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$BUILD_DIR" --output-on-failure -j"$JOBS"

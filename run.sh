#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
# Installs what is missing, builds the editor into build/ and opens it on the
# bundled example project (or on the project given as the first argument).
set -euo pipefail
cd "$(dirname "$0")"

./scripts/deps.sh

BUILD_DIR=${MORVANE_BUILD_DIR:-build}
JOBS=${MORVANE_JOBS:-2}

cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$BUILD_DIR" -j"$JOBS" --target morvane

PROJECT=${1:-examples/hero/hero.rigx}

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    cat >&2 <<MSG
Morvane is built ($BUILD_DIR/bin/morvane), but there is no display to open it on.
Run it inside a virtual X display instead:

    xvfb-run -a -s "-screen 0 1600x1000x24" ./run.sh

or start it directly on your desktop:

    $BUILD_DIR/bin/morvane $PROJECT
MSG
    exit 2
fi

exec "$BUILD_DIR/bin/morvane" "$PROJECT"

#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
# Redraws the example character's images into examples/hero/ with the
# make_example_images tool (built from make_example_images.cpp).
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${MORVANE_BUILD_DIR:-build}
cmake --build "$BUILD_DIR" --target morvane_make_example_images
QT_QPA_PLATFORM=offscreen "$BUILD_DIR/bin/morvane_make_example_images" examples

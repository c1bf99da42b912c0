#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the libFuzzer targets with clang (ASan + UBSan) into build-fuzz/ and runs each for
# SECONDS (default 600), one after the other on one core. Seeds come from
# tests/data/io/fuzz/<target>/; new corpus entries stay in build-fuzz/corpus/<target>/ and
# crash inputs in build-fuzz/artifacts/ (copy them to tests/data/io/fuzz-regressions/<target>/
# so the regression test replays them).
set -euo pipefail
cd "$(dirname "$0")/.."

SECONDS_PER_TARGET=${1:-600}
BUILD_DIR=${MORVANE_FUZZ_BUILD_DIR:-build-fuzz}
TARGETS=(${MORVANE_FUZZ_TARGETS:-xmlreader jsonreader mergepath})

cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DMORVANE_FUZZ=ON -DMORVANE_BUILD_TESTS=OFF -DMORVANE_BUILD_BENCH=OFF
cmake --build "$BUILD_DIR" -j"${MORVANE_JOBS:-2}" --target "${TARGETS[@]/#/fuzz_}"

status=0
for target in "${TARGETS[@]}"; do
    corpus="$BUILD_DIR/corpus/$target"
    artifacts="$BUILD_DIR/artifacts/$target/"
    mkdir -p "$corpus" "$artifacts"
    echo "== fuzz_$target for ${SECONDS_PER_TARGET}s"
    if ! ASAN_OPTIONS=detect_leaks=0 "$BUILD_DIR/bin/fuzz_$target" \
        -max_total_time="$SECONDS_PER_TARGET" -timeout=20 -rss_limit_mb=2048 -max_len=65536 \
        -artifact_prefix="$artifacts" -print_final_stats=1 \
        "$corpus" "tests/data/io/fuzz/$target"; then
        echo "fuzz_$target found a problem; see $artifacts"
        status=1
    fi
done
exit $status

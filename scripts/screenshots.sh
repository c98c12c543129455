#!/usr/bin/env bash
# Renders the library's windows offscreen (no display needed) into docs/screenshots/*.png.
# Names of scenes as arguments render only those.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
build=${SEARCHDATA_BUILD_DIR:-build-shots}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DSEARCHDATA_BUILD_TESTS=ON -DSEARCHDATA_BUILD_BENCH=OFF
cmake --build "$build" --target searchdata-screenshots
QT_QPA_PLATFORM=offscreen "$build/tests/widgets/screenshots/searchdata-screenshots" docs/screenshots "$@"

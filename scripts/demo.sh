#!/usr/bin/env bash
# Builds the demo host searchdata-demo and starts it on the desktop. At its first start it makes its
# demonstration database in the user's data folder; arguments go to the program (e.g. --db FILE).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
build=${SEARCHDATA_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DSEARCHDATA_BUILD_TESTS=OFF -DSEARCHDATA_BUILD_BENCH=OFF
cmake --build "$build" --target searchdata-demo
exec "$build/apps/demo/searchdata-demo" "$@"

#!/usr/bin/env bash
# Builds searchdata and runs its command-line program on a fresh SQLite database.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DSEARCHDATA_BUILD_TESTS=OFF -DSEARCHDATA_BUILD_BENCH=OFF
cmake --build build
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build/apps/cli/searchdata --db "$work/demo.sqlite" --sample

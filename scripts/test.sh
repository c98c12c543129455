#!/usr/bin/env bash
# Builds searchdata with sanitizers and runs every test, on SQLite and on a throwaway PostgreSQL cluster.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build-test -G Ninja -DCMAKE_BUILD_TYPE=Debug -DSEARCHDATA_SANITIZE=ON -DSEARCHDATA_BUILD_TESTS=ON
cmake --build build-test
ctest --test-dir build-test --output-on-failure --timeout 900 -j2

#!/usr/bin/env bash
# Runs the reliability suite: two users on one database, the program killed at random moments, and
# hostile input for the readers, on SQLite and on a throwaway PostgreSQL cluster of its own.
#   scripts/reliability.sh          the few trials that the test command runs
#   scripts/reliability.sh --long   the same scenarios at full size: 300 saves, 60 kills each, and a
#                                   million inputs for each fuzzed reader
# SEARCHDATA_FUZZ_INPUTS sets another number of inputs per fuzzed reader, SEARCHDATA_RELIABILITY_SEED
# other random moments and mutations.
# Builds what it needs (with sanitizers, optimized) in build-reliability, or $SEARCHDATA_BUILD_DIR.
# Prints the figures of each database as a table; the exit code is 0 only when every scenario passed.
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-}" in
  "") size=short ;;
  --long) size=long ;;
  *) echo "usage: $0 [--long]" >&2; exit 2 ;;
esac

scripts/install-deps.sh
build=${SEARCHDATA_BUILD_DIR:-build-reliability}
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSEARCHDATA_SANITIZE=ON \
      -DSEARCHDATA_BUILD_TESTS=ON -DSEARCHDATA_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null
cmake --build "$build" --target searchdata reliability_tests

work=$(mktemp -d)
cleanup() {
  tests/support/pg-cluster.sh stop "$work/pg" || true
  rm -rf "$work"
}
trap cleanup EXIT
tests/support/pg-cluster.sh start "$work/pg"
export SEARCHDATA_PG_STATE="$work/pg"
[ "$size" = long ] && export SEARCHDATA_RELIABILITY=long

# One process per database, side by side, as the test command runs them.
suite=$(realpath "$build/tests/reliability_tests")
"$suite" --gtest_brief=1 '--gtest_filter=*/SQLite:ReliabilityFuzz.*' >"$work/sqlite.log" 2>&1 &
sqlite=$!
"$suite" --gtest_brief=1 '--gtest_filter=*/PostgreSQL' >"$work/postgresql.log" 2>&1 &
postgresql=$!
status=0
wait "$sqlite" || status=1
wait "$postgresql" || status=1

for db in sqlite postgresql; do
  printf '\n== %s\n' "$db"
  grep -E '^(\[  FAILED  \]|\[ fuzz \])' "$work/$db.log" | sort -u || true
  # A run that was killed or crashed printed no table.
  sed -n '/^reliability figures/,/^\[==========\]/p' "$work/$db.log" | grep -v '^\[==========\]' || echo "no figures: the run ended early"
done
printf '\nfigures of: %s%s%s\n' "${SEARCHDATA_FUZZ_INPUTS:+SEARCHDATA_FUZZ_INPUTS=$SEARCHDATA_FUZZ_INPUTS }" "$0" "${1:+ $1}"
[ "$status" -eq 0 ] || { printf 'some scenarios failed; the logs were:\n'; tail -n 60 "$work"/*.log; }
exit "$status"

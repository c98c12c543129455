#!/usr/bin/env bash
# Installs the library from a build into a fresh prefix, builds examples/minimal-host against it with
# find_package(SearchData) and runs it offscreen.
# Usage: minimal-host.sh BUILD_DIR SOURCE_DIR WORK_DIR
set -euo pipefail
build=$1 source=$2 work=$3
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$source/examples/minimal-host" -B "$work/host" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_PREFIX_PATH="$work/prefix" "${launcher[@]}" >/dev/null
cmake --build "$work/host"
QT_QPA_PLATFORM=offscreen "$work/host/minimal-host"

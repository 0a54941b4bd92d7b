#!/usr/bin/env bash
# Builds Bramble and runs every test. BUILD_DIR and CMAKE_ARGS choose another build, e.g.
#   BUILD_DIR=build-asan CMAKE_ARGS=-DBRAMBLE_SANITIZE=ON scripts/test.sh
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build=${BUILD_DIR:-build}
# shellcheck disable=SC2086
cmake -S . -B "$build" ${CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j2
cd "$build"
QT_QPA_PLATFORM=offscreen ctest -j2 --output-on-failure --timeout 120

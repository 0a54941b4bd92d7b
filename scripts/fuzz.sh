#!/usr/bin/env bash
# Builds the fuzz targets with clang, libFuzzer and the address and undefined-behaviour
# sanitizers in build-fuzz/, then runs each for the given seconds (10 unless told) from the
# seed files in tests/fuzz/corpus. New inputs gather in build-fuzz/corpus, never in the
# repository. A crash, a leak or a hang stops with the input saved as build-fuzz/crash-*.
# RUNS=n ends each target after n inputs, if that comes before the seconds are over.
#
#   scripts/fuzz.sh [seconds] [target...]
#   RUNS=10000000 scripts/fuzz.sh 3600 nv_image     # a long run of one target
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-10}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(aio_oneb aio_beno nv_image conf_file setting_file serial_config board_replies)
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DBRAMBLE_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz -j2 >/dev/null
for t in "${targets[@]}"; do
  mkdir -p "build-fuzz/corpus/$t"
  cp -n tests/fuzz/corpus/"$t"/* "build-fuzz/corpus/$t/" 2>/dev/null || true
  echo "fuzz_$t: ${seconds} s"
  status=0
  ASAN_OPTIONS=detect_leaks=1 "build-fuzz/tests/fuzz/fuzz_$t" -max_total_time="$seconds" \
    ${RUNS:+-runs="$RUNS"} \
    -timeout=10 -rss_limit_mb=2048 -artifact_prefix=build-fuzz/ -print_final_stats=1 \
    "build-fuzz/corpus/$t" >"build-fuzz/fuzz_$t.log" 2>&1 || status=$?
  grep -E "^stat::number_of_executed_units|^Done" "build-fuzz/fuzz_$t.log" || true
  if [ "$status" -ne 0 ]; then
    grep -E "ERROR|SUMMARY|Test unit written" "build-fuzz/fuzz_$t.log" || true
    echo "fuzz_$t failed: see build-fuzz/fuzz_$t.log"
    exit 1
  fi
done

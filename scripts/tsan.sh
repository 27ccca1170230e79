#!/usr/bin/env bash
# Races the first use of the tables under ThreadSanitizer: 8 threads, each
# MX_RACE_ROUNDS rounds (tables dropped before each) of MX_RACE_TRIPS round
# trips through XML, JSON, Fast Infoset, gzip and the untyped tree: by default
# 20 rounds of 500, so 10,000 round trips (each a read and a write) per thread.
# Any report fails the run. Its own build folder, apart from the ASan build.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-tsan}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMX_TSAN=ON -DMX_BUILD_TESTS=ON \
  -DMX_BUILD_EXAMPLES=OFF
cmake --build "$build" -j"$(nproc)" --target test_threads
MX_RACE_ROUNDS=${MX_RACE_ROUNDS:-20} MX_RACE_TRIPS=${MX_RACE_TRIPS:-500} \
  TSAN_OPTIONS="halt_on_error=1 exitcode=66 ${TSAN_OPTIONS:-}" "$build/tests/test_threads"

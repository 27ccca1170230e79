#!/usr/bin/env bash
# Cold first use: runs the Release build of the thread test RUNS times (default
# 1000), each a fresh process in which 8 threads make the first objects, build
# the tables and read the order at the same moment. Prints the failed runs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-rel}
runs=${1:-1000}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DMX_BUILD_TESTS=ON -DMX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target test_threads >/dev/null
failed=0
for ((i = 0; i < runs; ++i)); do
  if ! MX_RACE_ROUNDS=1 MX_RACE_TRIPS=1 "$build/tests/test_threads" --gtest_brief=1 >"$build/first-use.log" 2>&1; then
    failed=$((failed + 1))
    cat "$build/first-use.log"
  fi
done
echo "cold first use: $failed of $runs runs failed"
[ "$failed" -eq 0 ]

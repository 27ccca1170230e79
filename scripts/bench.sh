#!/usr/bin/env bash
# Builds the benchmarks in Release (-O2) and runs the one named, with its
# arguments, or all of them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
MX_WITH_BENCH=1 "$root/scripts/install-deps.sh"
build=${BUILD_DIR:-$root/build-bench}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
  -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=OFF -DMX_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j"$(nproc)"
# One benchmark with its arguments (sizes in MB), or all with their defaults.
if [ $# -gt 0 ]; then
  name=$1
  shift
  echo "== bench_$name"
  exec "$build/bench/bench_$name" "$@"
fi
for b in "$build"/bench/bench_*; do
  echo "== $(basename "$b")"
  "$b"
done

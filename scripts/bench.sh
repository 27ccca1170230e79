#!/usr/bin/env bash
# Builds the benchmarks in Release (-O2) and runs the ones named, or all.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
MX_WITH_BENCH=1 "$root/scripts/install-deps.sh"
build=${BUILD_DIR:-$root/build-bench}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
  -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=OFF -DMX_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j"$(nproc)"
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for b in "$build"/bench/bench_*; do names+=("$(basename "$b" | sed 's/^bench_//')"); done
fi
for n in "${names[@]}"; do
  echo "== bench_$n"
  "$build/bench/bench_$n"
done

#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs one for the given seconds:
#   scripts/fuzz.sh <target> [seconds]     e.g. scripts/fuzz.sh document 600
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-fuzz}
target=${1:?target name, e.g. document}
seconds=${2:-60}
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DMX_BUILD_FUZZ=ON -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target "fuzz_$target"
corpus="$build/corpus-$target"
mkdir -p "$corpus"
seeds="$root/fuzz/corpus/$target"
[ -d "$seeds" ] && cp -n "$seeds"/* "$corpus"/ 2>/dev/null || true
"$build/fuzz/fuzz_$target" -max_total_time="$seconds" -rss_limit_mb=4096 -timeout=10 "$corpus"

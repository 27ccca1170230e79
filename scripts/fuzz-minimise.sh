#!/usr/bin/env bash
# Merges a target's working corpus (build-fuzz/corpus-<target>, grown by
# scripts/fuzz.sh) with its committed seeds into the smallest set that keeps
# the same coverage, and puts that set in fuzz/corpus/<target>:
#   scripts/fuzz-minimise.sh <target>       e.g. scripts/fuzz-minimise.sh json
# Files larger than 64 KiB are left out, so that the replay test stays cheap.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-fuzz}
target=${1:?target name, e.g. document}
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DMX_BUILD_FUZZ=ON -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target "fuzz_$target"
seeds="$root/fuzz/corpus/$target"
work="$build/corpus-$target"
merged="$build/merged-$target"
rm -rf "$merged"
mkdir -p "$merged" "$seeds" "$work"
"$build/fuzz/fuzz_$target" -merge=1 -max_len=65536 -rss_limit_mb=4096 -timeout=10 "$merged" "$seeds" "$work"
before=$(ls "$seeds" | wc -l)
# The committed regression inputs (regress-*) stay, whatever their coverage.
find "$seeds" -maxdepth 1 -type f ! -name 'regress-*' -delete
cp "$merged"/* "$seeds"/
echo "minimised $target: $before files before, $(ls "$seeds" | wc -l) after"

#!/usr/bin/env bash
# Runs the W3C XML Schema test suite's XSD 1.0 instance tests through the
# schema compiler's run-time back end and writes docs/xsdtests.md (the table
# per set and leg, and every failing case grouped by cause) and
# docs/xsdtests-failures.txt (the failing cases by name).
#
#   scripts/xsdtests.sh PATH     PATH: the suite's root (nistData, msMeta, ...)
#
# BUILD_DIR (default build-xsdtests) is a Release build; JOBS (default: the
# number of cores) runs that many shards side by side.
set -euo pipefail
if [ $# -ne 1 ] || [ ! -d "$1" ]; then
  echo "usage: scripts/xsdtests.sh PATH-TO-XSDTESTS" >&2
  exit 2
fi
root=$(cd "$(dirname "$0")/.." && pwd)
suite=$(cd "$1" && pwd)
build=${BUILD_DIR:-$root/build-xsdtests}
jobs=${JOBS:-$(nproc)}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$jobs" --target xsdtests >/dev/null
runner=$build/tools/xsdtests/xsdtests
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

start=$(date +%s)
pids=()
for ((i = 0; i < jobs; i++)); do
  "$runner" run "$suite" --shard "$i/$jobs" --results "$work/$i.tsv" 2>"$work/$i.err" &
  pids+=($!)
done
for pid in "${pids[@]}"; do wait "$pid"; done
seconds=$(( $(date +%s) - start ))
commit=$(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo unknown)
suiteCommit=$(git -C "$suite" rev-parse --short HEAD 2>/dev/null || echo "exported copy")

{
  cat "$root/docs/xsdtests.intro.md"
  echo
  echo "## Results"
  echo
  echo "Measured at commit $commit with \`scripts/xsdtests.sh\` ($jobs shards, $seconds s wall time on $(nproc) cores)."
  echo
  "$runner" report --failures "$root/docs/xsdtests-failures.txt" "$work"/*.tsv
} >"$root/docs/xsdtests.md"
echo "wrote docs/xsdtests.md in $seconds s"

#!/usr/bin/env bash
# Runs the W3C XML Schema test suite's XSD 1.0 instance tests through the
# schema compiler's run-time back end and writes docs/xsdtests.md (the table
# per set and leg, and every failing case grouped by cause) and
# docs/xsdtests-failures.txt (the failing cases by name).
#
#   scripts/xsdtests.sh PATH              PATH: the suite's root (nistData, msMeta, ...)
#   scripts/xsdtests.sh --compiled PATH   the sample (all of sun and boeing, every 10th ms
#                                         group, every 20th nist schema) generated as C++,
#                                         compiled (-O0, 50 groups to a library) and held to
#                                         the run-time back end byte for byte
#
# Each mode rewrites its own section of docs/xsdtests.md and keeps the other's.
# BUILD_DIR (default build-xsdtests) is a Release build; JOBS (default: the
# number of cores) runs that many shards side by side; BATCH (default 50)
# groups go to one compiled library.
set -euo pipefail
compiled=0
if [ "${1:-}" = "--compiled" ]; then
  compiled=1
  shift
fi
if [ $# -ne 1 ] || [ ! -d "$1" ]; then
  echo "usage: scripts/xsdtests.sh [--compiled] PATH-TO-XSDTESTS" >&2
  exit 2
fi
root=$(cd "$(dirname "$0")/.." && pwd)
suite=$(cd "$1" && pwd)
build=${BUILD_DIR:-$root/build-xsdtests}
build=$(mkdir -p "$build" && cd "$build" && pwd)
jobs=${JOBS:-$(nproc)}
batch=${BATCH:-50}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$jobs" --target xsdtests >/dev/null
runner=$build/tools/xsdtests/xsdtests
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
doc=$root/docs/xsdtests.md
commit=$(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo unknown)

# The part of docs/xsdtests.md that the other mode wrote: from its heading to
# the next part's, or nothing.
section() {
  [ -f "$doc" ] || return 0
  awk -v from="$1" -v to="$2" '
    $0 == from { on = 1 }
    to != "" && $0 == to { on = 0 }
    on { print }' "$doc"
}
results_heading="## Results"
compiled_heading="## Compiled classes against the run-time back end"

start=$(date +%s)
pids=()
if [ "$compiled" = 1 ]; then
  compile="g++ -std=c++17 -O0 -shared -fPIC -Wall -Wextra -I$build/include/MxXmlLib -L$build -lMxXmlLib -Wl,-rpath,$build"
  for ((i = 0; i < jobs; i++)); do
    mkdir -p "$work/$i"
    "$runner" compiled "$suite" --shard "$i/$jobs" --batch "$batch" --work "$work/$i" --compile "$compile" \
      --results "$work/$i.tsv" 2>"$work/$i.err" &
    pids+=($!)
  done
else
  for ((i = 0; i < jobs; i++)); do
    "$runner" run "$suite" --shard "$i/$jobs" --results "$work/$i.tsv" 2>"$work/$i.err" &
    pids+=($!)
  done
fi
status=0
for pid in "${pids[@]}"; do wait "$pid" || status=1; done
seconds=$(( $(date +%s) - start ))

if [ "$compiled" = 1 ]; then
  results=$(section "$results_heading" "$compiled_heading")
  compiledPart=$(
    echo "$compiled_heading"
    echo
    echo "Measured at commit $commit with \`scripts/xsdtests.sh --compiled\` ($jobs shards, batches of $batch groups," \
      "$seconds s wall time on $(nproc) cores, generating, compiling and running included)."
    echo
    "$runner" compiled-report "$work"/*.tsv
  )
  if [ "$status" != 0 ]; then
    echo "the compiler printed messages for generated code:" >&2
    cat "$work"/*.err >&2
  fi
else
  results=$(
    echo "$results_heading"
    echo
    echo "Measured at commit $commit with \`scripts/xsdtests.sh\` ($jobs shards, $seconds s wall time on $(nproc) cores)."
    echo
    "$runner" report --failures "$root/docs/xsdtests-failures.txt" "$work"/*.tsv
  )
  compiledPart=$(section "$compiled_heading" "")
fi
{
  cat "$root/docs/xsdtests.intro.md"
  if [ -n "$results" ]; then
    echo
    echo "$results"
  fi
  if [ -n "$compiledPart" ]; then
    echo
    echo "$compiledPart"
  fi
} >"$doc.new"
mv "$doc.new" "$doc"
echo "wrote docs/xsdtests.md in $seconds s"
exit "$status"

#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs one for the given seconds:
#   scripts/fuzz.sh <target> [seconds]     e.g. scripts/fuzz.sh document 600
# FUZZ_TIMEOUT (default 10) is the seconds one input may take; raise it when
# the fuzzer runs niced beside other work, where the wall clock runs long.
# The target's format dictionary (fuzz/dict/) is passed when it has one. The
# last line printed is "fuzz <target>: <seconds> s, <executions> executions".
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
case $target in
  document|untyped|stream_input|binding|mx_convert) dict=xml ;;
  json) dict=json ;;
  fastinfoset) dict=fastinfoset ;;
  *) dict= ;;
esac
args=(-max_total_time="$seconds" -rss_limit_mb=4096 -timeout="${FUZZ_TIMEOUT:-10}" -print_final_stats=1)
[ -n "$dict" ] && args+=(-dict="$root/fuzz/dict/$dict.dict")
log="$build/fuzz-$target.log"
cd "$build"
set +e
"$build/fuzz/fuzz_$target" "${args[@]}" "$corpus" 2>&1 | tee "$log"
status=${PIPESTATUS[0]}
set -e
runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
took=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
echo "fuzz $target: $seconds s, ${runs:-?} executions (${took:-?} per second), exit $status"
exit "$status"

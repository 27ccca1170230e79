#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UBSan and runs the whole suite.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
MX_WITH_PEERS=1 "$root/scripts/install-deps.sh"
build=${BUILD_DIR:-$root/build-test}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DMX_SANITIZE=ON -DMX_BUILD_TESTS=ON -DMX_BUILD_EXAMPLES=ON \
  -DMX_REQUIRE_PEERS=ON
cmake --build "$build" -j"$(nproc)"
cd "$build"
ctest --output-on-failure -j"$(nproc)"

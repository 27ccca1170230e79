#!/usr/bin/env bash
# Builds the library and runs the demonstration.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
build=${BUILD_DIR:-$root/build-demo}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=ON
cmake --build "$build" -j"$(nproc)" --target mx_demo
"$build/examples/mx_demo"

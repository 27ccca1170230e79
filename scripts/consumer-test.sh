#!/usr/bin/env bash
# Installs a built tree into a temporary prefix, then builds the consumer
# project of tests/consumer out of tree against it twice: with find_package
# and mx_generate, and with pkg-config and `mx generate`. Each program must
# read, change and write its document.
#   scripts/consumer-test.sh BUILD_DIR [extra compiler flags, e.g. the sanitizers]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?build folder}
flags=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null

cmake -S "$root/tests/consumer" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer" >/dev/null
echo "find_package and mx_generate: ok"

mkdir -p "$work/pc"
"$work/prefix/bin/mx" generate --schema "$root/tests/consumer/note.xsd" --out "$work/pc" --namespace urn:note=notes
export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig"
# shellcheck disable=SC2046,SC2086
g++ -std=c++17 $flags -I"$work/pc" $(pkg-config --cflags mxxmllib) "$root/tests/consumer/main.cpp" "$work/pc/note.cpp" \
  -o "$work/pc/consumer" $(pkg-config --libs mxxmllib) -Wl,-rpath,"$work/prefix/lib"
"$work/pc/consumer" >/dev/null
echo "pkg-config and mx generate: ok"

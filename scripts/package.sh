#!/usr/bin/env bash
# Builds in Release and makes the .deb (build-package/mxxmllib_<version>_<arch>.deb);
# its dependencies are those of the installed files, found by dpkg-shlibdeps.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
build=${BUILD_DIR:-$root/build-package}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DMX_BUILD_TESTS=OFF -DMX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"
(cd "$build" && cpack -G DEB)

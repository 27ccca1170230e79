#!/usr/bin/env bash
# Installs what the build needs on a fresh Debian machine (run as root).
set -euo pipefail
pkgs=(cmake g++ make pkg-config libexpat1-dev libpcre3-dev zlib1g-dev googletest libgtest-dev libxerces-c-dev dpkg-dev)
# RapidJSON is the baseline of the JSON benchmark only.
[ "${MX_WITH_BENCH:-0}" = 1 ] && pkgs+=(libbenchmark-dev rapidjson-dev)
# The test suite checks our output against independent readers: Python's json
# module and the Java Fast Infoset codec.
[ "${MX_WITH_PEERS:-0}" = 1 ] && pkgs+=(python3 libfastinfoset-java default-jdk-headless)
missing=()
for p in "${pkgs[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq "${missing[@]}"
fi

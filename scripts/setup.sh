#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmarks need, when any is
# missing. Runs as root on Debian 12; a machine that has them all is left alone.
set -euo pipefail

packages=(
  g++ cmake make pkg-config
  libjsoncpp-dev zlib1g-dev libminizip-dev libutfcpp-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  python3 procps
  python3-numpy python3-pil libvips-dev
  libboost-dev python3-websockets chromium dpkg-dev file
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if [ "${#missing[@]}" -gt 0 ]; then
  echo "installing: ${missing[*]}"
  if [ "$(id -u)" -ne 0 ]; then
    echo "setup: these packages are missing and installing them needs root: ${missing[*]}" >&2
    exit 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  apt-get update
  apt-get install -y --no-install-recommends "${missing[@]}"
fi

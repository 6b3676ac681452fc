#!/usr/bin/env bash
# Installs the Debian packages that building and testing ornex_rt needs,
# skipping those already present. Safe to run again. Extra package names
# given as arguments are installed too (the benchmark yardsticks use this).
set -euo pipefail

packages=(
  cmake g++ make pkg-config binutils
  googletest libgtest-dev libbenchmark-dev
  gcc-multilib g++-multilib
  g++-mingw-w64-i686-win32
  libpng-dev libfreetype-dev libfontconfig-dev fonts-dejavu-core
  python3-dev python3-numpy python3-pybind11 pybind11-dev python3-pytest
  python3-setuptools python3-pip python3-venv
  "$@"
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null

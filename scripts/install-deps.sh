#!/usr/bin/env bash
# Installs the Debian packages that building and testing ornex_rt needs,
# skipping those already present. Safe to run again.
# Usage: scripts/install-deps.sh [CONFIGURATION ...] [PACKAGE ...]
# Configurations (as scripts/test.sh names them, and demo) install only what
# they need: release, sanitize, tsan, m32, arm64, windows, windows64, python,
# fuzz, demo. Without one, everything is installed. Other arguments are extra package names (the
# benchmark yardsticks use this).
set -euo pipefail

base=(
  cmake g++ make pkg-config binutils
  googletest libgtest-dev libbenchmark-dev
  libopenimageio-dev libfreetype-dev libfontconfig-dev fonts-dejavu-core
)
m32=(g++-i686-linux-gnu)
arm64=(g++-aarch64-linux-gnu qemu-user)
windows=(g++-mingw-w64-i686-win32)
windows64=(g++-mingw-w64-x86-64-posix wine64)
fuzz=(clang-14 libclang-rt-14-dev)
python=(python3-dev python3-numpy python3-pybind11 pybind11-dev python3-pytest python3-setuptools python3-pip python3-venv)

packages=("${base[@]}")
extra=()
named=0
for argument in "$@"; do
  case $argument in
    release | sanitize | tsan | demo) named=1 ;;
    m32) named=1; packages+=("${m32[@]}") ;;
    arm64) named=1; packages+=("${arm64[@]}") ;;
    windows) named=1; packages+=("${windows[@]}") ;;
    windows64) named=1; packages+=("${windows64[@]}") ;;
    python) named=1; packages+=("${python[@]}") ;;
    fuzz) named=1; packages+=("${fuzz[@]}") ;;
    *) extra+=("$argument") ;;
  esac
done
if [ "$named" -eq 0 ]; then
  packages+=("${m32[@]}" "${arm64[@]}" "${windows[@]}" "${windows64[@]}" "${python[@]}" "${fuzz[@]}")
fi
packages+=(${extra[@]+"${extra[@]}"})

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

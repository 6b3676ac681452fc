#!/usr/bin/env bash
# Builds ornex_rt and runs every test in three configurations:
#   release   64-bit optimised build
#   m32       32-bit build (SSE2 floating point)
#   sanitize  64-bit build with AddressSanitizer and UndefinedBehaviorSanitizer
#   windows   32-bit Windows DLL cross-built with mingw-w64; its tests cannot
#             run here, so only its export table is checked
# Usage: scripts/test.sh [configuration ...]   (default: all four)
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
"$root/scripts/install-deps.sh"

jobs=$(nproc 2>/dev/null || echo 2)
configurations=("$@")
if [ ${#configurations[@]} -eq 0 ]; then
  configurations=(release m32 sanitize windows)
fi

for configuration in "${configurations[@]}"; do
  case $configuration in
    release) options=(-DCMAKE_BUILD_TYPE=Release) ;;
    m32) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-linux-i686.cmake") ;;
    sanitize) options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DORNEX_SANITIZE=ON) ;;
    windows) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw-i686.cmake") ;;
    *) echo "unknown configuration: $configuration" >&2; exit 2 ;;
  esac
  echo "=== $configuration"
  build="$root/build/$configuration"
  cmake -S "$root" -B "$build" "${options[@]}" >/dev/null
  cmake --build "$build" -j "$jobs"
  ctest --test-dir "$build" --output-on-failure -j "$jobs"
done
echo "=== all tests passed: ${configurations[*]}"

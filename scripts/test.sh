#!/usr/bin/env bash
# Builds ornex_rt and runs every test in six configurations:
#   release   64-bit optimised build
#   m32       32-bit build (SSE2 floating point)
#   arm64     64-bit ARM build cross-built with Debian's aarch64 GCC; its tests
#             run under qemu-aarch64
#   sanitize  64-bit build with AddressSanitizer and UndefinedBehaviorSanitizer
#   windows   32-bit Windows DLL cross-built with mingw-w64; its tests cannot
#             run here, so only its export table is checked
#   python    the Python module, installed with pip into a fresh virtual
#             environment as the README says, and its pytest suite
# Usage: scripts/test.sh [configuration ...]   (default: all six)
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
jobs=$(nproc 2>/dev/null || echo 2)
configurations=("$@")
if [ ${#configurations[@]} -eq 0 ]; then
  configurations=(release m32 arm64 sanitize windows python)
fi
"$root/scripts/install-deps.sh" "${configurations[@]}"

# The module is installed as a user would install it; the tests then compare
# it with the C++ layer's results, written by a small program of the build.
test_python() {
  local build="$root/build/python"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DORNEX_BUILD_PYTHON=ON -DORNEX_BUILD_TESTS=OFF \
    -DORNEX_BUILD_TOOL=OFF -DORNEX_BUILD_BENCHMARKS=OFF -DPython_EXECUTABLE=/usr/bin/python3 >/dev/null
  cmake --build "$build" -j "$jobs" --target ornex_layer_cases
  rm -rf "$build/cases" && mkdir -p "$build/cases"
  "$build/python/ornex_layer_cases" "$build/cases"
  /usr/bin/python3 -m venv --system-site-packages --clear "$build/venv"
  "$build/venv/bin/python" -m pip install --quiet --no-build-isolation "$root/python"
  (cd "$build" && ORNEX_LAYER_CASES="$build/cases" "$build/venv/bin/python" -m pytest -q -p no:cacheprovider "$root/python/tests")
}

for configuration in "${configurations[@]}"; do
  case $configuration in
    release) options=(-DCMAKE_BUILD_TYPE=Release) ;;
    m32) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-linux-i686.cmake") ;;
    arm64) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-linux-aarch64.cmake") ;;
    sanitize) options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DORNEX_SANITIZE=ON) ;;
    windows) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw-i686.cmake") ;;
    python) echo "=== python"; test_python; continue ;;
    *) echo "unknown configuration: $configuration" >&2; exit 2 ;;
  esac
  echo "=== $configuration"
  build="$root/build/$configuration"
  cmake -S "$root" -B "$build" "${options[@]}" >/dev/null
  cmake --build "$build" -j "$jobs"
  ctest --test-dir "$build" --output-on-failure -j "$jobs"
done
echo "=== all tests passed: ${configurations[*]}"

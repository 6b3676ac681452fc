#!/usr/bin/env bash
# Builds ornex_rt and runs every test in these configurations:
#   release    64-bit optimised build
#   m32        32-bit build (SSE2 floating point)
#   arm64      64-bit ARM build cross-built with Debian's aarch64 GCC; its tests
#              run under qemu-aarch64
#   sanitize   64-bit build with AddressSanitizer and UndefinedBehaviorSanitizer
#   tsan       the test that runs several families on two threads at once,
#              built with ThreadSanitizer
#   windows    32-bit Windows DLL cross-built with mingw-w64; only its export
#              table is checked
#   windows64  64-bit Windows build cross-built with mingw-w64, its tests run
#              under Wine in a prefix of its own (build/windows64/wine-prefix)
#   python     the Python module, installed with pip into a fresh virtual
#              environment as the README says, and its pytest suite
#   fuzz       the libFuzzer harnesses of tests/fuzz (clang, with the
#              sanitizers), each run for ORNEX_FUZZ_SECONDS (50) seconds
# Usage: scripts/test.sh [configuration ...]   (default: all of them)
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
jobs=$(nproc 2>/dev/null || echo 2)
configurations=("$@")
if [ ${#configurations[@]} -eq 0 ]; then
  configurations=(release m32 arm64 sanitize tsan windows windows64 python fuzz)
fi
for configuration in "${configurations[@]}"; do
  case $configuration in
    release | m32 | arm64 | sanitize | tsan | windows | windows64 | python | fuzz) ;;
    *) echo "unknown configuration: $configuration" >&2; exit 2 ;;
  esac
done
"$root/scripts/install-deps.sh" "${configurations[@]}"

# Only the threads test runs under ThreadSanitizer: it is what exercises
# concurrency, and the rest would only be slower.
test_tsan() {
  local build="$root/build/tsan"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORNEX_TSAN=ON -DORNEX_BUILD_TOOL=OFF >/dev/null
  cmake --build "$build" -j "$jobs" --target cpp_threads_test
  TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" ctest --test-dir "$build" --output-on-failure -R cpp_threads_test
}

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

# One harness on a copy of its checked-in seeds (the copy grows, the seeds
# stay), its log and exit status under build/fuzz/logs. Hangs count as
# failures. The image reader needs full stacks for the known OpenImageIO
# leak in tests/tool/lsan.supp, and malloc returning null past the
# sanitizer's limit as it would without it (see its harness).
fuzz_one() {
  local name=$1 build=$2 seconds=$3
  local corpus="$build/corpus/$name" logs="$build/logs"
  rm -rf "$corpus" && mkdir -p "$corpus" && cp "$root/tests/fuzz/corpus/$name"/* "$corpus"/
  local asan=""
  [ "$name" = image_reader ] && asan="fast_unwind_on_malloc=0:allocator_may_return_null=1"
  local status=0
  ASAN_OPTIONS="$asan" LSAN_OPTIONS="suppressions=$root/tests/tool/lsan.supp" \
    "$build/tests/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
    -artifact_prefix="$logs/$name-" "$corpus" >"$logs/$name.log" 2>&1 || status=$?
  echo "$status" >"$logs/$name.status"
}

test_fuzz() {
  local build="$root/build/fuzz" seconds=${ORNEX_FUZZ_SECONDS:-50}
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORNEX_FUZZ=ON -DORNEX_BUILD_TESTS=OFF \
    -DORNEX_BUILD_BENCHMARKS=OFF -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 >/dev/null
  cmake --build "$build" -j "$jobs" --target ornex_fuzz_harnesses
  rm -rf "$build/logs" && mkdir -p "$build/logs"
  local names=() failed=()
  for corpus in "$root"/tests/fuzz/corpus/*/; do
    names+=("$(basename "$corpus")")
  done
  for name in "${names[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n || true; done
    fuzz_one "$name" "$build" "$seconds" &
  done
  wait
  for name in "${names[@]}"; do
    local runs
    runs=$(grep -o 'number_of_executed_units: [0-9]*' "$build/logs/$name.log" | grep -o '[0-9]*$' || echo "?")
    printf '%-16s %10s executions in %s s\n' "$name" "$runs" "$seconds"
    if [ "$(cat "$build/logs/$name.status")" != 0 ]; then
      failed+=("$name")
      grep -A20 -E '^==[0-9]+==ERROR|runtime error|Sanitizer|deadly signal|timeout' "$build/logs/$name.log" | head -40 || true
    fi
  done
  if [ ${#failed[@]} -ne 0 ]; then
    echo "fuzzing found problems in: ${failed[*]} (inputs and logs in $build/logs)" >&2
    return 1
  fi
}

# Builds one configuration with CMake and runs its tests with CTest.
test_build() {
  local options
  case $1 in
    release) options=(-DCMAKE_BUILD_TYPE=Release) ;;
    m32) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-linux-i686.cmake") ;;
    arm64) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-linux-aarch64.cmake") ;;
    sanitize) options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DORNEX_SANITIZE=ON) ;;
    windows) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw-i686.cmake") ;;
    windows64) options=(-DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw-x86_64.cmake") ;;
  esac
  local build="$root/build/$1"
  cmake -S "$root" -B "$build" "${options[@]}" >/dev/null
  cmake --build "$build" -j "$jobs"
  ctest --test-dir "$build" --output-on-failure -j "$jobs"
}

timings=()
for configuration in "${configurations[@]}"; do
  echo "=== $configuration"
  started=$SECONDS
  case $configuration in
    tsan) test_tsan ;;
    python) test_python ;;
    fuzz) test_fuzz ;;
    *) test_build "$configuration" ;;
  esac
  timings+=("$(printf '%-10s %5d s' "$configuration" $((SECONDS - started)))")
done
echo "=== all tests passed: ${configurations[*]}"
printf '  %s\n' "${timings[@]}"

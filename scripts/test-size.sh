#!/usr/bin/env bash
# Prints the non-blank lines of tests (tests/ and python/tests/) and of
# everything else that is code (src/, include/, tools/, bench/, cmake/,
# scripts/, the rest of python/ and the top CMakeLists.txt) among the files
# git tracks, and the ratio of the two. The fuzz harnesses (tests/fuzz) are
# counted on their own: like the benchmarks they drive the code without
# expected values, so they are neither the checks the ratio weighs nor the
# code they check.
# Usage: scripts/test-size.sh
set -euo pipefail
cd "$(dirname "$0")/.."

count() {
  git ls-files -- "$@" |
    grep -E '(\.(c|cc|cpp|h|hpp|inc|in|sh|cmake|py)|CMakeLists\.txt)$' |
    while IFS= read -r file; do cat "$file"; echo; done |
    grep -cv '^[[:space:]]*$' || true
}

tests=$(count tests python/tests ':(exclude)tests/fuzz')
fuzz=$(count tests/fuzz)
code=$(count src include tools bench cmake scripts python CMakeLists.txt ':(exclude)python/tests')
awk -v tests="$tests" -v code="$code" -v fuzz="$fuzz" \
  'BEGIN { printf "tests %d lines, code %d lines, ratio %.2f (fuzz harnesses %d lines)\n", tests, code, tests / code, fuzz }'

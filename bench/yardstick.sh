#!/usr/bin/env bash
# One command for every workload we measure against a peer: runs each family's
# yardstick script (our benchmark and OpenCV or FFmpeg on the same inputs, one
# thread each, in this same session), then prints one table of our time, the
# peer's and the ratio, and the far-outside drawing calls on their own.
# Usage: bench/yardstick.sh [BUILD_DIR]   (a 64-bit release build with benchmarks)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
rows=$(mktemp)
trap 'rm -f "$rows"' EXIT

for script in "$root"/bench/*/*yardstick.sh; do
  echo "=== ${script#"$root"/}" >&2
  "$script" "$build" | tee -a "$rows" | { grep -v '^ROW' || true; } >&2
done

echo
awk -F'\t' '
  BEGIN { printf "| workload | ours (ms) | peer | peer (ms) | ratio |\n|---|---|---|---|---|\n" }
  $1 == "ROW" { printf "| %s | %.2f | %s | %.2f | %.2f |\n", $2, $3, $4, $5, $3 / $5 }' "$rows"

echo
echo "Far-outside calls (geometry reaching far beyond the clip rectangle):"
for bench in "$build"/bench/*_bench; do
  "$bench" --benchmark_filter='Far|far|Beside' --benchmark_min_time=0.2 2>/dev/null |
    awk '$1 ~ /Far|far|Beside/ { printf "  %-60s %s %s\n", $1, $2, $3 }'
done

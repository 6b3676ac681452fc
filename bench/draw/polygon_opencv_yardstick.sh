#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) filling the same kind of
# polygons as polygon_fill_bench: 1,000 random 8-vertex polygons, each with
# its vertices uniformly random inside a 128x128 box placed at random fully
# inside a 1024x1024 8-bit image. Runs our benchmark in the same session so
# the ratio comes from one run: OpenCV and ours twice, interleaved, best of
# each, and
# a ROW line (ours net of nothing: one C call per polygon; OpenCV net of the
# empty Python loop).
# Usage: bench/draw/polygon_opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

opencv() {
/usr/bin/python3 - <<'PY'
import random, time
import cv2, numpy as np
cv2.setNumThreads(1)
side, box, count, vertices = 1024, 128, 1000, 8
rng = random.Random(2024)
polygons = []
for _ in range(count):
    top, left = rng.randint(0, side - box), rng.randint(0, side - box)
    # cv2 points are (x, y) = (column, row)
    points = [(left + rng.randint(0, box - 1), top + rng.randint(0, box - 1)) for _ in range(vertices)]
    polygons.append([np.array(points, np.int32)])
image = np.zeros((side, side), np.uint8)
best = None
for _ in range(5):
    start = time.perf_counter()
    for polygon in polygons:
        cv2.fillPoly(image, polygon, 255, 8)
    elapsed = time.perf_counter() - start
    best = elapsed if best is None else min(best, elapsed)
start = time.perf_counter()
for polygon in polygons:
    pass
loop = time.perf_counter() - start
print(f"OpenCV {cv2.__version__} fillPoly: {best * 1000:.2f} ms per 1,000 polygons "
      f"({count / best / 1000:.0f}k polygons/s; the Python loop alone {loop * 1000:.3f} ms)")
print(f"PEER\t{(best - loop) * 1000:.3f}")
PY
}
ours() {
"$build/bench/draw_polygon_fill_bench" --benchmark_filter='-Far|Beside' --benchmark_repetitions=5 --benchmark_format=csv 2>/dev/null |
  awk -F, 'NR > 1 && $1 ~ /Polygons/ && $1 !~ /_(mean|median|stddev|cv)"$/ {gsub(/"/, "", $1);
           if (!($1 in best) || $3 < best[$1]) {best[$1] = $3; rate[$1] = $7}}
           END {for (name in best) printf "ornex_rt %s: %.2f ms per 1,000 polygons (%.0fk polygons/s)\n",
                name, best[name], rate[name] / 1000}' | sort
}
log=$( { opencv; ours; opencv; ours; } | tee >(cat >&2))
peer=$(printf '%s\n' "$log" | awk -F'\t' '$1 == "PEER" && (best == "" || $2 + 0 < best + 0) {best = $2} END {print best}')
mine=$(printf '%s\n' "$log" | awk '/BM_Polygons_UI8_Opaque:/ {sub(/.*Opaque: /, ""); v = $1 + 0;
                                   if (best == "" || v < best) best = v} END {print best}')
printf 'ROW\t1,000 filled 8-vertex polygons 1024x1024 8-bit\t%s\tOpenCV fillPoly\t%s\n' "$mine" "$peer"

#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) on the same anti-aliased
# fills as aa_fill_bench: 2,000 filled discs with an integer radius uniform in
# 5..60 placed wholly inside a 1024x1024 8-bit image (circle, thickness -1,
# LINE_AA), and 1,000 random 8-vertex polygons, each with its vertices
# uniformly random inside a 128x128 box placed at random inside the image
# (fillPoly, LINE_AA). Runs our benchmark in the same session so the ratios
# come from one run. Best of 5 on both sides.
# Usage: bench/draw/aa_fill_opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

log=$(/usr/bin/python3 - <<'PY' | tee >(cat >&2)
import random, time
import cv2, numpy as np
cv2.setNumThreads(1)
side, box = 1024, 128
rng = random.Random(2024)
discs = []
for _ in range(2000):
    radius = rng.randint(5, 60)
    row, col = rng.randint(radius, side - 1 - radius), rng.randint(radius, side - 1 - radius)
    discs.append(((col, row), radius))  # cv2 points are (x, y) = (column, row)
polygons = []
for _ in range(1000):
    top, left = rng.randint(0, side - box), rng.randint(0, side - box)
    points = [(left + rng.randint(0, box - 1), top + rng.randint(0, box - 1)) for _ in range(8)]
    polygons.append([np.array(points, np.int32)])

def best_of_five(draw):
    image = np.zeros((side, side), np.uint8)
    best = None
    for _ in range(5):
        start = time.perf_counter()
        draw(image)
        elapsed = time.perf_counter() - start
        best = elapsed if best is None else min(best, elapsed)
    return best

def draw_discs(image):
    for centre, radius in discs:
        cv2.circle(image, centre, radius, 255, -1, cv2.LINE_AA)

def draw_polygons(image):
    for polygon in polygons:
        cv2.fillPoly(image, polygon, 255, cv2.LINE_AA)

print(f"OpenCV {cv2.__version__} filled circle LINE_AA: {best_of_five(draw_discs) * 1000:.2f} ms per 2,000 discs")
aa_polygons = best_of_five(draw_polygons)
print(f"OpenCV {cv2.__version__} fillPoly LINE_AA: {aa_polygons * 1000:.2f} ms per 1,000 polygons")
print(f"PEER_AA_POLYGONS\t{aa_polygons * 1000:.3f}")
PY
)
"$build/bench/draw_aa_fill_bench" --benchmark_filter='-Far|Beside' --benchmark_repetitions=5 --benchmark_format=csv 2>/dev/null |
  awk -F, 'NR > 1 && $1 !~ /_(mean|median|stddev|cv)"$/ {gsub(/"/, "", $1);
           if (!($1 in best) || $3 < best[$1]) {best[$1] = $3}}
           END {for (name in best) printf "ornex_rt %s: %.2f ms per %s\n", name, best[name],
                name ~ /Discs/ ? "2,000 discs" : "1,000 polygons"}' | sort | tee >(cat >&2) |
  awk -v peer="$(printf '%s\n' "$log" | awk -F'\t' '$1 == "PEER_AA_POLYGONS" {print $2}')" \
      '/BM_AAPolygons_UI8_Opaque:/ {sub(/.*Opaque: /, "");
       printf "ROW\t1,000 anti-aliased 8-vertex polygons 1024x1024 8-bit\t%.3f\tOpenCV fillPoly LINE_AA\t%s\n", $1, peer}' 

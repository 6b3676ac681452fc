#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) drawing the same kind of
# anti-aliased circle outlines as aa_circle_bench: 2,000 random circles, each
# with an integer radius uniform in 5..60 and a centre placed at random so the
# whole circle lies inside a 1024x1024 8-bit image. Runs our benchmark in the
# same session so the ratio comes from one run. Best of 5 on both sides.
# Ends with one line
#   ROW<TAB>workload<TAB>our ms<TAB>peer name<TAB>peer ms
# for the 8-bit outlines, OpenCV's figure net of its empty Python loop.
# Usage: bench/draw/circle_opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy >/dev/null
peer=$(mktemp)
trap 'rm -f "$peer"' EXIT

/usr/bin/python3 - 3>"$peer" <<'PY'
import os
import random, time
import cv2, numpy as np
cv2.setNumThreads(1)
side, count, min_radius, max_radius = 1024, 2000, 5, 60
rng = random.Random(2024)
circles = []
for _ in range(count):
    radius = rng.randint(min_radius, max_radius)
    row, col = rng.randint(radius, side - 1 - radius), rng.randint(radius, side - 1 - radius)
    # cv2 centres are (x, y) = (column, row)
    circles.append(((col, row), radius))
image = np.zeros((side, side), np.uint8)
best = None
for _ in range(5):
    start = time.perf_counter()
    for centre, radius in circles:
        cv2.circle(image, centre, radius, 255, 1, cv2.LINE_AA)
    elapsed = time.perf_counter() - start
    best = elapsed if best is None else min(best, elapsed)
start = time.perf_counter()
for centre, radius in circles:
    pass
loop = time.perf_counter() - start
print(f"OpenCV {cv2.__version__} circle LINE_AA: {best * 1000:.2f} ms per 2,000 circles "
      f"({count / best / 1000:.0f}k circles/s; the Python loop alone {loop * 1000:.3f} ms)")
os.write(3, f"{(best - loop) * 1000:.3f}\n".encode())
PY
"$build/bench/draw_aa_circle_bench" --benchmark_filter='-Far|Beside' --benchmark_repetitions=5 --benchmark_format=csv 2>/dev/null |
  awk -F, 'NR > 1 && $1 ~ /Circles/ && $1 !~ /_(mean|median|stddev|cv)"$/ {gsub(/"/, "", $1);
           if (!($1 in best) || $3 < best[$1]) {best[$1] = $3; rate[$1] = $7}}
           END {for (name in best) printf "ornex_rt %s: %.3f ms per 2,000 circles (%.0fk circles/s)\n",
                name, best[name], rate[name] / 1000;
                printf "ROW\t2,000 anti-aliased circles, radius 5..60, 1024x1024 8-bit\t%.3f\tOpenCV circle LINE_AA\t%.3f\n",
                best["BM_AACircles_UI8"], peer}' peer="$(cat "$peer")" | sort

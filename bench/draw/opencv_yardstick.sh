#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) drawing the same kind of
# lines as line_bench: 10,000 random segments with end-points up to a quarter
# of the image outside a 1024x1024 8-bit image, plain and anti-aliased. Runs
# our benchmark in the same session so the ratio comes from one run.
# Usage: bench/draw/opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

/usr/bin/python3 - <<'PY'
import random, time
import cv2, numpy as np
cv2.setNumThreads(1)
side, count = 1024, 10000
rng = random.Random(2024)
lines = [tuple(rng.randint(-side // 4, side + side // 4) for _ in range(4)) for _ in range(count)]
image = np.zeros((side, side), np.uint8)
def run(kind):
    best = None
    for _ in range(5):
        start = time.perf_counter()
        for r1, c1, r2, c2 in lines:
            cv2.line(image, (c1, r1), (c2, r2), 255, 1, kind)
        elapsed = time.perf_counter() - start
        best = elapsed if best is None else min(best, elapsed)
    return best
start = time.perf_counter()
for r1, c1, r2, c2 in lines:
    pass
loop = time.perf_counter() - start
for name, kind in (("plain", cv2.LINE_8), ("anti-aliased", cv2.LINE_AA)):
    t = run(kind)
    print(f"OpenCV {cv2.__version__} {name}: {t * 1000:.1f} ms per 10,000 lines "
          f"({count / t / 1000:.0f}k lines/s; the Python loop alone {loop * 1000:.1f} ms)")
PY
"$build/bench/draw_line_bench" --benchmark_min_time=1 2>/dev/null |
  awk '/Lines/ {printf "ornex_rt %s: %s %s per 10,000 lines (%s)\n", $1, $2, $3, $NF}'

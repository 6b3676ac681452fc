#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) warping a 1920x1080
# single-precision image onto 1920x1080 through the same mild homography as
# projective_warp_bench (warpPerspective, linear and cubic, constant border),
# then our warp in the same session. Best of several runs on both sides.
# Usage: bench/geometry/warp_opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

/usr/bin/python3 - <<'PY'
import time
import cv2, numpy as np
cv2.setNumThreads(1)
rows, cols = 1080, 1920
r = np.arange(rows, dtype=np.float64)[:, None]
c = np.arange(cols, dtype=np.float64)[None, :]
image = (128 + 60 * np.sin(0.05 * r) * np.cos(0.07 * c)).astype(np.float32)
# (column, row) = H (x, y, 1), the benchmark's forward matrix.
H = np.array([[0.96, -0.05, 60.0], [0.04, 0.95, 30.0], [1.5e-5, -1.0e-5, 1.0]])
for name, flag in (("linear", cv2.INTER_LINEAR), ("cubic", cv2.INTER_CUBIC)):
    best = None
    for _ in range(15):
        start = time.perf_counter()
        cv2.warpPerspective(image, H, (cols, rows), flags=flag, borderMode=cv2.BORDER_CONSTANT, borderValue=0)
        elapsed = time.perf_counter() - start
        best = elapsed if best is None else min(best, elapsed)
    print(f"OpenCV {cv2.__version__} warpPerspective {name}, float, 1920x1080: {best * 1000:.2f} ms")
PY
"$build/bench/geometry_projective_warp_bench" --benchmark_repetitions=7 --benchmark_min_time=0.2 \
  --benchmark_format=csv 2>/dev/null |
  awk -F, 'NR > 1 && $1 !~ /_(mean|median|stddev|cv)"$/ {gsub(/"/, "", $1); if (!($1 in best) || $3 < best[$1]) best[$1] = $3}
           END {for (name in best) printf "ornex_rt %s: %.2f ms\n", name, best[name]}' | sort

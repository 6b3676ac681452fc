#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) shearing a 1024x1024
# single-precision image by 0.3 with linear interpolation (warpAffine), then
# our line shear of the same image in the same session.
# Usage: bench/geometry/opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

/usr/bin/python3 - <<'PY'
import time
import cv2, numpy as np
cv2.setNumThreads(1)
side = 1024
rows = np.arange(side, dtype=np.float32)[:, None]
cols = np.arange(side, dtype=np.float32)[None, :]
image = (128 + 60 * np.sin(0.05 * rows) * np.cos(0.07 * cols)).astype(np.float32)
shear = np.float32([[1, 0.3, 0], [0, 1, 0]])
size = (side + int(0.3 * side) + 1, side)
best = None
for _ in range(20):
    start = time.perf_counter()
    cv2.warpAffine(image, shear, size, flags=cv2.INTER_LINEAR, borderMode=cv2.BORDER_CONSTANT, borderValue=0)
    elapsed = time.perf_counter() - start
    best = elapsed if best is None else min(best, elapsed)
print(f"OpenCV {cv2.__version__} warpAffine shear, linear, float: {best * 1000:.2f} ms")
PY
"$build/bench/geometry_geometry_bench" --benchmark_filter='shearLinear<float>' --benchmark_min_time=1 2>/dev/null |
  awk '/shear/ {printf "ornex_rt %s: %s %s\n", $1, $2, $3}'

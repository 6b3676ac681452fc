#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) warping a 1920x1080
# single-precision image onto 1920x1080 through the same mild homography as
# projective_warp_bench (warpPerspective, linear and cubic, constant border),
# and our warp, in alternating rounds of one session; best of every run on
# both sides. Prints our figures for every benchmark case, then one line
#   ROW<TAB>workload<TAB>our ms<TAB>peer name<TAB>peer ms
# for the bilinear and the bicubic warp (exact positions, D = 16).
# Usage: bench/geometry/warp_opencv_yardstick.sh [BUILD_DIR] [ROUNDS]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
rounds=${2:-3}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for ((round = 0; round < rounds; ++round)); do
  /usr/bin/python3 - >>"$work/peer" <<'PY'
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
    for _ in range(7):
        start = time.perf_counter()
        cv2.warpPerspective(image, H, (cols, rows), flags=flag, borderMode=cv2.BORDER_CONSTANT, borderValue=0)
        elapsed = time.perf_counter() - start
        best = elapsed if best is None else min(best, elapsed)
    print(f"{name} {best * 1000:.3f} {cv2.__version__}")
PY
  "$build/bench/geometry_projective_warp_bench" --benchmark_repetitions=5 --benchmark_min_time=0.2 \
    --benchmark_format=csv 2>/dev/null |
    awk -F, 'NR > 1 && $1 !~ /_(mean|median|stddev|cv)"$/ {gsub(/"/, "", $1); print $1, $3}' >>"$work/ours"
done

awk '{if (!($1 in best) || $2 < best[$1]) best[$1] = $2} END {for (n in best) printf "ornex_rt %s: %.2f ms\n", n, best[n]}' \
  "$work/ours" | sort
awk '{if (!($1 in best) || $2 < best[$1]) best[$1] = $2; version = $3}
     END {for (n in best) printf "OpenCV %s warpPerspective %s, float, 1920x1080: %.2f ms\n", version, n, best[n]}' \
  "$work/peer" | sort
awk 'FNR == NR {if (!($1 in ours) || $2 < ours[$1]) ours[$1] = $2; next}
     {if (!($1 in peer) || $2 < peer[$1]) peer[$1] = $2}
     END {
       split("2 3", methods, " "); split("bilinear bicubic", names, " "); split("linear cubic", flags, " ")
       for (k = 1; k <= 2; ++k) {
         o = ours["BM_Warp_R/method:" methods[k] "/exact:1/D:16"]; p = peer[flags[k]]
         printf "ROW\tprojective warp 1920x1080 single, %s, D=16, exact positions\t%.2f\tOpenCV warpPerspective %s\t%.2f\n",
                names[k], o, flags[k], p
         printf "ratio %s: %.2f\n", names[k], o / p > "/dev/stderr"
       }
     }' "$work/ours" "$work/peer"

#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) finding lines in the
# same 1024x1024 binary image as hough_bench (HoughLines with rho steps of
# one pixel and 180 angles, its own peak search included) against our vote
# of that image into 180 angles (single and double), alternating the two
# sides over several rounds and taking the median of each. Both sides are
# timed in processor time, which other work on a shared machine moves less.
# Prints one ROW line per workload: name, our ms, peer, peer ms.
# Usage: bench/detection/hough_opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

/usr/bin/python3 - "$build/bench/detection_hough_bench" "$root/bench" <<'PY'
import statistics, sys, time
import cv2, numpy as np
cv2.setNumThreads(1)
bench = sys.argv[1]
sys.dont_write_bytecode = True  # nothing written into the source tree
sys.path.insert(0, sys.argv[2])
from benchmark_medians import benchmark_medians
side = 1024
r = np.arange(side, dtype=np.uint32)[:, None]
c = np.arange(side, dtype=np.uint32)[None, :]
with np.errstate(over="ignore"):
    h = (r * np.uint32(73856093)) ^ (c * np.uint32(19349663))
    h ^= h >> np.uint32(13)
    h *= np.uint32(0x5BD1E995)
    h ^= h >> np.uint32(15)
image = np.where(h % 100 == 0, 255, 0).astype(np.uint8)
for line in range(6):
    for row in range(side):
        image[row, (row * (line + 1) // 7 + 100 * line) % side] = 255
print(f"edge pixels: {int(np.count_nonzero(image))}")

def peer_ms():
    times = []
    for _ in range(15):
        start = time.process_time()
        cv2.HoughLines(image, 1, np.pi / 180, 150)
        times.append(time.process_time() - start)
    return statistics.median(times) * 1000

def ours_ms():
    return benchmark_medians(bench, "houghVote", 5)

peer, ours = [], {}
for _ in range(5):
    peer.append(peer_ms())
    for name, ms in ours_ms().items():
        ours.setdefault(name, []).append(ms)
peer_median = statistics.median(peer)
peer_name = f"OpenCV {cv2.__version__} HoughLines incl. peak search"
for name, label in (("houghVote<float>", "single"), ("houghVote<double>", "double")):
    mine = statistics.median(ours[name])
    print(f"ornex_rt {name}: {mine:.2f} ms, {peer_name}: {peer_median:.2f} ms, ratio {mine / peer_median:.2f}")
    print(f"ROW\tHough vote 1024x1024, 180 angles, {label}\t{mine:.3f}\t{peer_name}\t{peer_median:.3f}")
PY

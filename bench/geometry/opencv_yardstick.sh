#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) shearing a 1024x1024
# single-precision image by 0.3 with linear interpolation (warpAffine,
# constant border), along its rows and along its columns, against our
# shears of the same image: the column shear (one C call per column), the
# row shear by one C call per row (each walks its row a whole column apart
# value by value) and the row shear of the C++ layer. The two sides
# alternate over several rounds; each figure is the median, in processor
# time, which other work on a shared machine moves less. Also prints what
# merely copying every row at that stride costs, the floor of per-row calls.
# Prints one ROW line per workload: name, our ms, peer, peer ms.
# Usage: bench/geometry/opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

/usr/bin/python3 - "$build/bench/geometry_geometry_bench" "$root/bench" <<'PY'
import statistics, sys, time
import cv2, numpy as np
cv2.setNumThreads(1)
bench = sys.argv[1]
sys.dont_write_bytecode = True  # nothing written into the source tree
sys.path.insert(0, sys.argv[2])
from benchmark_medians import benchmark_medians
side = 1024
rows = np.arange(side, dtype=np.float32)[:, None]
cols = np.arange(side, dtype=np.float32)[None, :]
image = (128 + 60 * np.sin(0.05 * rows) * np.cos(0.07 * cols)).astype(np.float32)
grown = side + int(np.ceil(0.3 * (side - 1)))
# (x, y) = (column, row): rows slide along x, columns along y.
peers = {"rows": (np.float32([[1, 0.3, 0], [0, 1, 0]]), (grown, side)),
         "columns": (np.float32([[1, 0, 0], [0.3, 1, 0]]), (side, grown))}

def peer_ms(matrix, size):
    times = []
    for _ in range(9):
        start = time.process_time()
        cv2.warpAffine(image, matrix, size, flags=cv2.INTER_LINEAR, borderMode=cv2.BORDER_CONSTANT, borderValue=0)
        times.append(time.process_time() - start)
    return statistics.median(times) * 1000

def ours_ms():
    return benchmark_medians(bench, "shearLinear<float>|shearRowsLinear.*<float>|copyRowsAtStride", 3)

peer = {key: [] for key in peers}
ours = {}
for _ in range(5):
    for key, (matrix, size) in peers.items():
        peer[key].append(peer_ms(matrix, size))
    for name, ms in ours_ms().items():
        ours.setdefault(name, []).append(ms)
peer = {key: statistics.median(values) for key, values in peer.items()}
ours = {name: statistics.median(values) for name, values in ours.items()}
label = f"OpenCV {cv2.__version__} warpAffine"
print(f"copying every row at a stride of {side} values, row after row: {ours['copyRowsAtStride<float>']:.2f} ms")
for workload, name, key in (
        ("row shear 1024x1024 single by 0.3, linear, per-row C calls", "shearRowsLinearPerCall<float>", "rows"),
        ("row shear 1024x1024 single by 0.3, linear, C++ layer", "shearRowsLinearLayer<float>", "rows"),
        ("column shear 1024x1024 single by 0.3, linear, per-column C calls", "shearLinear<float>", "columns")):
    print(f"ornex_rt {name}: {ours[name]:.2f} ms, {label} along {key}: {peer[key]:.2f} ms, "
          f"ratio {ours[name] / peer[key]:.2f}")
    print(f"ROW\t{workload}\t{ours[name]:.3f}\t{label}\t{peer[key]:.3f}")
PY

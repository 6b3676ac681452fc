#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) smoothing with a 5x5
# Gaussian and running Canny on a 1920x1080 8-bit image, and our Canny
# drivers (single and double, kernels of length 5) on the same image, in
# rounds that alternate between the two. The image is generated here,
# deterministically: shading, flat discs and boxes, mild noise. Times are
# CPU times of the calling thread (both sides run on one thread): the ROW
# lines give medians over the rounds of each round's median; the fastest
# calls are printed too, since a busy machine slows the two sides unevenly.
# Usage: bench/detection/canny_opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export ORNEX_CANNY_IMAGE=$work/scene.raw
rounds=5

/usr/bin/python3 - "$ORNEX_CANNY_IMAGE" <<'PY'
import sys
import numpy as np
rows, cols = 1080, 1920
rng = np.random.default_rng(15)
r = np.arange(rows)[:, None].astype(np.float64)
c = np.arange(cols)[None, :].astype(np.float64)
image = 90 + 50 * np.sin(c / 210.0) * np.cos(r / 170.0) + 0.03 * c
for _ in range(40):
    cr, cc, size = rng.uniform(0, rows), rng.uniform(0, cols), rng.uniform(20, 160)
    tone = rng.uniform(-70, 70)
    if rng.integers(2):
        inside = (r - cr) ** 2 + (c - cc) ** 2 < size ** 2
    else:
        inside = (abs(r - cr) < size * 0.6) & (abs(c - cc) < size)
    image = np.where(inside, image + tone, image)
image += rng.normal(0, 3.0, image.shape)
np.clip(np.rint(image), 0, 255).astype(np.uint8).tofile(sys.argv[1])  # row after row
PY

opencv_round() {
  /usr/bin/python3 - "$ORNEX_CANNY_IMAGE" <<'PY'
import sys, time
import cv2, numpy as np
cv2.setNumThreads(1)
image = np.fromfile(sys.argv[1], np.uint8).reshape(1080, 1920)
times = []
for _ in range(21):
    start = time.thread_time()
    edges = cv2.Canny(cv2.GaussianBlur(image, (5, 5), 0), 50, 150)
    times.append(time.thread_time() - start)
print(f"{np.median(times) * 1000:.3f} {(edges > 0).mean():.4f} {cv2.__version__} {min(times) * 1000:.3f}")
PY
}

# One line per type: the median CPU time of the repetitions, the edge share
# and the fastest repetition.
ours_round() {
  "$build/bench/detection_detection_bench" --benchmark_filter='cannyUserThresholdsOnImageFile' \
    --benchmark_repetitions=5 --benchmark_display_aggregates_only=true 2>/dev/null |
    awk '/_median/ {split($1, name, "[<>]"); for (i = 1; i <= NF; ++i) if ($i ~ /^share=/) share = substr($i, 7);
                    median[name[2]] = $4; shares[name[2]] = share}
         /_min/ {split($1, name, "[<>]"); fastest[name[2]] = $4}
         END {for (type in median) print type, median[type], shares[type], fastest[type]}'
}

for round in $(seq "$rounds"); do
  echo "opencv $(opencv_round)"
  ours_round
done >"$work/rounds"

median() { sort -n | awk '{v[NR] = $1} END {print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2}'; }
least() { sort -n | head -1; }
peer=$(awk '$1 == "opencv" {print $2}' "$work/rounds" | median)
single=$(awk '$1 == "float" {print $2}' "$work/rounds" | median)
double=$(awk '$1 == "double" {print $2}' "$work/rounds" | median)
peer_fastest=$(awk '$1 == "opencv" {print $5}' "$work/rounds" | least)
single_fastest=$(awk '$1 == "float" {print $4}' "$work/rounds" | least)
double_fastest=$(awk '$1 == "double" {print $4}' "$work/rounds" | least)
version=$(awk '$1 == "opencv" {print $4; exit}' "$work/rounds")
peer_share=$(awk '$1 == "opencv" {print $3; exit}' "$work/rounds")
our_share=$(awk '$1 == "float" {print $3; exit}' "$work/rounds")
echo "OpenCV $version GaussianBlur 5x5 + Canny(50, 150): $peer ms (edge share $peer_share)"
echo "ornex_rt EdgeCanny_userTh_R: $single ms, EdgeCanny_userTh_D: $double ms," \
  "thresholds 0.1 and 0.25 of the largest (edge share $our_share; m = 1/1000)"
awk -v s="$single" -v d="$double" -v p="$peer" \
  'BEGIN {printf "ratios of medians: single %.2f (goal at most 1), double %.2f (goal at most 2)\n", s / p, d / p}'
awk -v s="$single_fastest" -v d="$double_fastest" -v p="$peer_fastest" \
  'BEGIN {printf "fastest: OpenCV %.2f ms (one call), ours (mean of one repetition) single %.2f ms (ratio %.2f),", p, s, s / p
         printf " double %.2f ms (ratio %.2f)\n", d, d / p}'
peer_name="OpenCV GaussianBlur 5x5 + Canny, 8-bit"
printf 'ROW\t%s\t%s\t%s\t%s\n' "Canny 1920x1080 single, L=5" "$single" "$peer_name" "$peer"
printf 'ROW\t%s\t%s\t%s\t%s\n' "Canny 1920x1080 double, L=5" "$double" "$peer_name" "$peer"

#!/usr/bin/env bash
# Times OpenCV (Debian's python3-opencv, one thread) drawing the same kind of
# lines as line_bench: 10,000 random segments with end-points up to a quarter
# of the image outside a 1024x1024 8-bit image, plain and anti-aliased. Runs
# our benchmark in the same session so the ratio comes from one run; best of
# several short repetitions on both sides, in processor time (on a shared
# machine wall time mostly measures the other processes).
#
# Both sides are taken net of the per-call cost. OpenCV: minus the same loop
# calling cv2.line with segments above the image (the binding's argument
# handling and an immediate rejection, about a third of a microsecond per
# call); the empty Python loop alone is printed too. Ours: minus line_bench's
# emptyCalls (10,000 calls that draw nothing).
# Prints one line per workload: ROW <tab> name <tab> our ms <tab> peer <tab> peer ms.
# Usage: bench/draw/opencv_yardstick.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" python3-opencv python3-numpy
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

/usr/bin/python3 - >"$scratch/opencv" <<'PY'
import random, time
import cv2, numpy as np
cv2.setNumThreads(1)
side, count = 1024, 10000
rng = random.Random(2024)
lines = [tuple(rng.randint(-side // 4, side + side // 4) for _ in range(4)) for _ in range(count)]
outside = [(-5 - i % 7, -9, -5 - i % 5, -3) for i in range(count)]
image = np.zeros((side, side), np.uint8)
def run(segments, kind):
    best = None
    for _ in range(15):
        start = time.process_time()
        for r1, c1, r2, c2 in segments:
            cv2.line(image, (c1, r1), (c2, r2), 255, 1, kind)
        elapsed = time.process_time() - start
        best = elapsed if best is None else min(best, elapsed)
    return best * 1000
start = time.process_time()
for r1, c1, r2, c2 in lines:
    pass
loop = (time.process_time() - start) * 1000
for name, kind in (("plain", cv2.LINE_8), ("anti-aliased", cv2.LINE_AA)):
    total, calls = run(lines, kind), run(outside, kind)
    print(f"{name} {total - calls:.3f} OpenCV {cv2.__version__} {name}: {total:.2f} ms per 10,000 lines, "
          f"{total - calls:.2f} ms net of the {calls:.2f} ms that calls drawing nothing take "
          f"({total - loop:.2f} ms net of the empty Python loop alone)")
PY
"$build/bench/draw_line_bench" --benchmark_filter='^(plainLines|antialiasedLines|emptyCalls)$' \
  --benchmark_min_time=0.05 --benchmark_repetitions=15 --benchmark_format=csv 2>/dev/null >"$scratch/ours"

awk -F, -v opencv="$scratch/opencv" '
  NR > 1 && $1 !~ /_(mean|median|stddev|cv)"$/ {gsub(/"/, "", $1); if (!($1 in best) || $4 < best[$1]) best[$1] = $4}
  END {
    while ((getline line < opencv) > 0) {
      split(line, f, " "); peer[f[1]] = f[2]; sub(/^[^ ]+ [^ ]+ /, "", line); print line
    }
    rows["plain"] = "plainLines"; names["plain"] = "10,000 clipped lines 1024x1024 8-bit, Bresenham"
    rows["anti-aliased"] = "antialiasedLines"; names["anti-aliased"] = "10,000 clipped lines, anti-aliased"
    for (kind in rows) {
      ours = best[rows[kind]] - best["emptyCalls"]
      printf "ornex_rt %s: %.2f ms per 10,000 lines, %.2f ms net of %.3f ms for calls drawing nothing (ratio %.2f)\n",
             rows[kind], best[rows[kind]], ours, best["emptyCalls"], ours / peer[kind]
      printf "ROW\t%s\t%.3f\tOpenCV line\t%.3f\n", names[kind], ours, peer[kind]
    }
  }' "$scratch/ours"

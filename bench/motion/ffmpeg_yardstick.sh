#!/usr/bin/env bash
# Times FFmpeg's motion-estimation filter on 640x480 8-bit frame pairs with
# the settings of block_matching_bench (16x16 blocks, displacement up to 7),
# exhaustive and three-step, then runs our benchmark in the same session so
# the ratio comes from one run. Usage: bench/motion/ffmpeg_yardstick.sh BUILD_DIR
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/release}
"$root/scripts/install-deps.sh" ffmpeg

frames=101
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
ffmpeg -loglevel error -f lavfi -i "testsrc2=size=640x480:rate=25" -frames:v $frames \
  -pix_fmt gray -f rawvideo "$scratch/frames.gray"

seconds() { # filter: best wall time of three passes over the frames
  local best=""
  for _ in 1 2 3; do
    local start end
    start=$(date +%s.%N)
    ffmpeg -loglevel error -f rawvideo -pix_fmt gray -s 640x480 -i "$scratch/frames.gray" \
      -threads 1 -filter_threads 1 -vf "$1" -f null -
    end=$(date +%s.%N)
    best=$(awk -v start="$start" -v end="$end" -v best="$best" \
      'BEGIN { t = end - start; print (best == "" || t < best) ? t : best }')
  done
  echo "$best"
}

baseline=$(seconds null)
for method in esa tss; do
  total=$(seconds "mestimate=method=$method:mb_size=16:search_param=7")
  echo "$method" "$total" "$baseline" | awk -v pairs=$((frames - 1)) \
    '{printf "ffmpeg mestimate %s: %.2f ms per frame pair\n", $1, ($2 - $3) * 1000 / pairs}'
done
"$build/bench/motion_block_matching_bench" --benchmark_filter='_MAD_R' --benchmark_min_time=1 2>/dev/null |
  awk '/matchFramePair/ {printf "ornex_rt %s: %s %s per frame pair\n", $1, $2, $3}'

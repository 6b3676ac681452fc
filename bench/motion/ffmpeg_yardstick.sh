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
ours=$("$build/bench/motion_block_matching_bench" --benchmark_filter='_MAD_R' --benchmark_min_time=1 2>/dev/null)
echo "$ours" | awk '/matchFramePair/ {printf "ornex_rt %s: %s %s per frame pair\n", $1, $2, $3}'
for method in esa tss; do
  total=$(seconds "mestimate=method=$method:mb_size=16:search_param=7")
  peer=$(awk -v t="$total" -v b="$baseline" -v pairs=$((frames - 1)) 'BEGIN { printf "%.3f", (t - b) * 1000 / pairs }')
  echo "ffmpeg mestimate $method: $peer ms per frame pair"
  case $method in esa) name=Full; label=exhaustive ;; *) name=3Step; label=three-step ;; esac
  echo "$ours" | awk -v name="$name" -v label="$label" -v peer="$peer" -F'[[:space:]]+' \
    '$1 == "matchFramePair/" name "_MAD_R" {
       printf "ROW\tblock matching 640x480, 16x16 blocks, +-7, %s, MAD\t%s\tFFmpeg mestimate\t%s\n", label, $2, peer }'
done

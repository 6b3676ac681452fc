#!/bin/sh
# run_demo.sh ORNEX SCRATCH
# Runs the demo and checks its report against what the scene was built
# from: the motion recovered by block matching, edges found, the drawn lines
# among the strongest Hough lines, and every image present and readable.
set -u
ornex=$1 scratch=$2
rm -rf "$scratch" && mkdir -p "$scratch" || exit 1
"$ornex" demo "$scratch/out" > "$scratch/report.txt" || { echo "the demo failed"; exit 1; }
cat "$scratch/report.txt"
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

for file in scene frame2 motion flow_hs flow_lk edges lines warp shear summary; do
  [ -s "$scratch/out/$file.png" ] || fail "missing $file.png"
  "$ornex" shear "$scratch/out/$file.png" "$scratch/check.png" --amount 0 || fail "$file.png does not read back"
done

# The decimal numbers of the report's line that contains $1, one per line.
figures() { grep "$1" "$scratch/report.txt" | grep -oE -- '-?[0-9]+\.[0-9]+'; }

# "median vector (u, v) = (U, V); the warp moves block centres by (KU, KV)"
figures 'median vector' | awk '{ x[NR] = $1 } END {
  if (NR != 4) { print "FAIL: no block matching figures"; exit 1 }
  if ((x[1] - x[3]) ^ 2 + (x[2] - x[4]) ^ 2 > 1) {
    print "FAIL: block matching found (" x[1] ", " x[2] "), the warp moved by (" x[3] ", " x[4] ")"; exit 1 } }' ||
  failures=$((failures + 1))

# Both flows must show most of the one-pixel move, with the opposite sign
# that their derivative filters give.
for method in Horn-Schunck Lucas-Kanade; do
  figures "$method median" | awk -v method="$method" '{ x[NR] = $1 } END {
    if (NR < 2 || x[1] > -0.4 || x[2] > -0.4) { print "FAIL: " method " flow (" x[1] ", " x[2] ") misses the move"; exit 1 } }' ||
    failures=$((failures + 1))
done

awk '/edge pixels/ { if ($1 < 1000) { print "FAIL: only " $1 " edge pixels"; exit 1 } found = 1 }
     END { if (!found) { print "FAIL: no edge count"; exit 1 } }' "$scratch/report.txt" || failures=$((failures + 1))

# "drawn line theta T deg, rho R: nearest strong line theta T2 deg, rho R2":
# within 2 degrees and 3 pixels.
figures 'drawn line' | awk '{ x[NR] = $1 } END {
  if (NR != 8) { print "FAIL: expected two drawn lines in the report"; exit 1 }
  for (k = 0; k < 8; k += 4) if ((x[k + 1] - x[k + 3]) ^ 2 > 4 || (x[k + 2] - x[k + 4]) ^ 2 > 9) {
    print "FAIL: drawn line (" x[k + 1] ", " x[k + 2] ") not among the strongest: (" x[k + 3] ", " x[k + 4] ")"; exit 1 } }' ||
  failures=$((failures + 1))

[ "$failures" -eq 0 ] || { echo "$failures checks failed"; exit 1; }
echo "the demo recovered what the scene was built from"

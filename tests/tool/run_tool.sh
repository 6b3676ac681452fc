#!/bin/sh
# run_tool.sh ORNEX SCRATCH: the demo must recover what its scene was built from, then the program's
# exit codes, one-line messages and usage texts.
set -u
ornex=$1 scratch=$2
rm -rf "$scratch" && mkdir -p "$scratch" && cd "$scratch" || exit 1
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

"$ornex" demo out > report.txt || fail "the demo failed"
cat report.txt
for file in scene frame2 motion flow_hs flow_lk edges lines warp shear summary; do
  [ "$(wc -c < "out/$file.png")" -gt 1000 ] || fail "$file.png is missing or nearly empty"
  "$ornex" shear "out/$file.png" check.ppm --amount 0 || fail "$file.png does not read back"
done
# The decimal numbers of the report's lines: block matching against the known warp (within a pixel), both
# flows showing the one-pixel move with their filters' opposite sign, edges, and each drawn line within
# 2 degrees and 3 pixels of a strong Hough line.
awk '{ n = 0; for (k = 1; k <= NF; ++k) if (match($k, /-?[0-9]+\.[0-9]+/)) x[++n] = substr($k, RSTART, RLENGTH) + 0 }
  /median vector/ { blocks = (x[1] - x[3]) ^ 2 + (x[2] - x[4]) ^ 2 <= 1 }
  /median \(u, v\)/ && !/vector/ { flows += x[1] <= -0.4 && x[2] <= -0.4 }
  /edge pixels/ { edges = $1 >= 1000 }
  /drawn line/ { drawn += (x[1] - x[3]) ^ 2 <= 4 && (x[2] - x[4]) ^ 2 <= 9 }
  END { if (!blocks || flows != 2 || !edges || drawn != 2) { print "FAIL: the report misses the scene"; exit 1 } }' report.txt ||
  failures=$((failures + 1))

# expect CODE MESSAGE COMMAND...: exits with CODE, MESSAGE the whole of stderr.
expect() {
  code=$1 message=$2; shift 2
  "$@" > out.txt 2> err.txt; got=$?
  [ "$got" -eq "$code" ] && [ "$(cat err.txt)" = "$message" ] || fail "$*: exit $got, stderr: $(cat err.txt)"
}
expect 1 "ornex edges: cannot read 'none.png': no such file" "$ornex" edges none.png o.png
expect 1 "ornex edges: sigma: must be positive and finite" "$ornex" edges out/scene.png o.png --sigma -1
expect 2 "ornex: unknown command 'blur' (ornex --help lists the commands)" "$ornex" blur out/scene.png o.png
[ ! -e o.png ] || fail "a refused command wrote o.png"
for command in demo edges lines motion flow warp shear draw; do
  expect 0 "" "$ornex" "$command" --help
  grep -q "^usage: ornex $command" out.txt || fail "$command --help prints no usage"
done
"$ornex" > out.txt 2> err.txt; [ $? -eq 2 ] && grep -q '^usage: ornex COMMAND' err.txt || fail "no command: no usage on stderr"
"$ornex" demo a b 2> err.txt; [ $? -eq 2 ] && grep -q '^usage: ornex demo' err.txt || fail "demo a b: no usage on stderr"
[ "$failures" -eq 0 ] || { echo "$failures checks failed"; exit 1; }

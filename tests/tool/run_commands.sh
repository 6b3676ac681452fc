#!/bin/sh
# run_commands.sh ORNEX SCRATCH
# Runs every subcommand of the tool on tiny images, then the bad inputs:
# each must fail with its message on stderr and leave no output file.
set -u
ornex=$1 scratch=$2
rm -rf "$scratch" && mkdir -p "$scratch" && cd "$scratch" || exit 1
failures=0

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# ok NAME COMMAND...: must exit 0.
ok() {
  name=$1; shift
  if ! "$@" > out.txt 2> err.txt; then fail "$name exited non-zero: $(cat err.txt)"; fi
}

# refused NAME OUTPUT MESSAGE COMMAND...: must exit non-zero, say MESSAGE on
# stderr, and leave OUTPUT absent.
refused() {
  name=$1 output=$2 message=$3; shift 3
  if "$@" > out.txt 2> err.txt; then fail "$name succeeded"; fi
  grep -q -- "$message" err.txt || fail "$name: stderr lacks '$message': $(cat err.txt)"
  [ "$(wc -l < err.txt)" -eq 1 ] || fail "$name: expected one line on stderr, got: $(cat err.txt)"
  [ ! -e "$output" ] || fail "$name left $output behind"
  ls | grep -q '\.tmp' && fail "$name left a temporary file: $(ls)"
}

# Two frames: a slanted shape on a striped background, then moved by (1, 2).
ok draw "$ornex" draw a.png 'polygon:4,6,3,26,18,24,20,5@0.9,0.4,0.2' 'aaline:1,1,22,30' 'aacircle:12,16,6@0.2,1,0.4' \
  'line:0,0,0,31' 'circle:12,16,3' 'text:22,2,ab' --size 24,32 --font-size 10
ok draw-over "$ornex" draw b.png 'polygon:5,8,4,28,19,26,21,7@0.9,0.4,0.2' 'aaline:2,3,23,32' --input a.png
ok draw-big "$ornex" draw big.png 'circle:10,10,5' --size 40,40
ok draw-aa "$ornex" draw aa.png 'aadisc:12,16,6@0.2,1,0.4' 'aapolygon:4,6,3,26,18,24,20,5@0.9,0.4,0.2' --size 24,32
for file in a.png b.png big.png aa.png; do [ -s "$file" ] || fail "draw did not write $file"; done

ok edges "$ornex" edges a.png edges.png --sigma 1
grep -q 'edge pixels' out.txt || fail "edges: no count printed"
ok edges-auto "$ornex" edges a.png edges.pgm --auto 80
ok lines "$ornex" lines a.png lines.png --count 3 --theta-step 2
grep -q '^theta' out.txt || fail "lines: no line printed"
ok motion "$ornex" motion a.png b.png motion.ppm --block 8 --range 3 --search three-step --cost mse
grep -q 'median vector' out.txt || fail "motion: no median printed"
ok flow-hs "$ornex" flow a.png b.png flow.png --iterations 20
ok flow-lk "$ornex" flow a.png b.png flow-lk.png --method lk
ok warp "$ornex" warp a.png warp.png --to 2,3,0,31,23,29,20,0 --interpolation bicubic --approximate --subdivisions 3
ok warp-size "$ornex" warp a.png warp-big.png --to 0,0,0,63,47,63,47,0 --size 48,64
ok shear "$ornex" shear a.png shear.png --amount 0.5
ok shear-vertical "$ornex" shear edges.pgm shear.pgm --amount -0.25 --vertical --interpolation nearest
for file in edges.png edges.pgm lines.png motion.ppm flow.png flow-lk.png warp.png warp-big.png shear.png shear.pgm; do
  [ -s "$file" ] || fail "missing output $file"
  ok "read back $file" "$ornex" shear "$file" check.png --amount 0
done
for command in demo edges lines motion flow warp shear draw; do
  ok "$command --help" "$ornex" "$command" --help
  grep -q '^usage: ornex' out.txt || fail "$command --help prints no usage"
done

refused missing-file out.png "cannot read 'nothing.png'" "$ornex" edges nothing.png out.png
printf 'not an image\n' > text.png
refused wrong-format out.png "cannot read 'text.png'" "$ornex" edges text.png out.png
refused frame-sizes out.png "frames: must have the same size" "$ornex" motion a.png big.png out.png
refused bad-sigma out.png "sigma" "$ornex" edges a.png out.png --sigma -1
refused not-a-number out.png "expects a number" "$ornex" shear a.png out.png --amount x
refused unknown-option out.png "unknown option '--colour'" "$ornex" shear a.png out.png --amount 1 --colour 2
refused bad-extension out.bmp "unsupported extension" "$ornex" shear a.png out.bmp --amount 1
refused missing-folder nowhere/out.png "cannot write 'nowhere/out.png'" "$ornex" shear a.png nowhere/out.png --amount 1
refused bad-item out.png "item 'star:1,2'" "$ornex" draw out.png star:1,2
refused bad-radius out.png "radius: must be positive" "$ornex" draw out.png circle:5,5,0
refused bad-disc out.png "radius: must be positive" "$ornex" draw out.png aadisc:5,5,0
refused odd-aapolygon out.png "item 'aapolygon:1,2,3,4,5'" "$ornex" draw out.png aapolygon:1,2,3,4,5
refused warp-corners out.png "--to: expects 8" "$ornex" warp a.png out.png --to 1,2,3
refused unknown-command out.png "unknown command 'blur'" "$ornex" blur a.png out.png

if [ "$failures" -ne 0 ]; then
  echo "$failures checks failed"
  exit 1
fi
echo "all command checks passed"

#!/usr/bin/env bash
# Builds the library and the ornex tool, then runs the demo on its built-in
# scene. Usage: scripts/demo.sh [OUTDIR]   (default ornex-demo)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh" demo
build="$root/build/release"
echo "building the library and the ornex tool in $build (about a minute on two cores the first time)"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DORNEX_BUILD_TOOL=ON >/dev/null
cmake --build "$build" --target ornex -j "$(nproc 2>/dev/null || echo 2)"
outdir=${1:-ornex-demo}
"$build/tools/ornex/ornex" demo "$outdir"
echo "open $outdir/summary.png for the contact sheet; each stage has its own PNG next to it"

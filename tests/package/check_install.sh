#!/bin/sh
# check_install.sh CMAKE BUILD_DIR SCRATCH CONSUMER_DIR CC CFLAGS PKG_CONFIG
set -eu
cmake=$1 build=$2 scratch=$3 consumer=$4 cc=$5 cflags=$6 pkgconfig=$7
prefix=$scratch/prefix

rm -rf "$scratch"
mkdir -p "$scratch"
"$cmake" --install "$build" --prefix "$prefix" >/dev/null

libdir=$(dirname "$(find "$prefix" -name 'libornex_rt.so*' | head -n 1)")
export LD_LIBRARY_PATH="$libdir${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"

check_output() {
  output=$("$1")
  echo "$2: $output"
  # The consumer searches a 2x2 block planted at row 1, column 2 of a 4x5
  # region, and prints the best column, the best row and the version.
  case $output in
    "2 1 "[0-9]*.[0-9]*.[0-9]*.[0-9]*) ;;
    *) echo "unexpected output from the $2 consumer"; exit 1 ;;
  esac
}

"$cmake" -S "$consumer" -B "$scratch/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$cflags" >/dev/null
"$cmake" --build "$scratch/by-cmake" >/dev/null
check_output "$scratch/by-cmake/consumer" find_package

PKG_CONFIG_PATH="$libdir/pkgconfig"
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086
"$cc" $cflags "$consumer/consumer.c" $("$pkgconfig" --cflags --libs ornex_rt) -o "$scratch/by-pkg-config"
check_output "$scratch/by-pkg-config" pkg-config

#!/bin/sh
# check_install.sh CMAKE BUILD_DIR SCRATCH CONSUMER_DIR README CC CFLAGS PKG_CONFIG CXX
# Installs the build into a scratch prefix and builds the README's C example
# against it, once through find_package and once through pkg-config, and the
# README's C++ example through pkg-config.
set -eu
cmake=$1 build=$2 scratch=$3 consumer=$4 readme=$5 cc=$6 cflags=$7 pkgconfig=$8 cxx=$9
prefix=$scratch/prefix

rm -rf "$scratch"
mkdir -p "$scratch"
"$cmake" --install "$build" --prefix "$prefix" >/dev/null

example=$scratch/readme_example.c
sed -n '/^```c$/,/^```$/p' "$readme" | sed '1d;$d' > "$example"
[ -s "$example" ] || { echo "no C example in $readme"; exit 1; }

libdir=$(dirname "$(find "$prefix" -name 'libornex_rt.so*' | head -n 1)")
export LD_LIBRARY_PATH="$libdir${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"

check_output() {
  output=$("$1")
  echo "$2: $output"
  case $output in
    "row 1, column 2 (ornex_rt "[0-9]*.[0-9]*.[0-9]*.[0-9]*", built "*" "*" "[0-9][0-9][0-9][0-9]")") ;;
    *) echo "unexpected output from the $2 build"; exit 1 ;;
  esac
}

"$cmake" -S "$consumer" -B "$scratch/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCONSUMER_SOURCE="$example" -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$cflags" >/dev/null
"$cmake" --build "$scratch/by-cmake" >/dev/null
check_output "$scratch/by-cmake/consumer" find_package

PKG_CONFIG_PATH="$libdir/pkgconfig"
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086
"$cc" $cflags -Werror -Wall "$example" $("$pkgconfig" --cflags --libs ornex_rt) -o "$scratch/by-pkg-config"
check_output "$scratch/by-pkg-config" pkg-config

example_cpp=$scratch/readme_example.cpp
sed -n '/^```cpp$/,/^```$/p' "$readme" | sed '1d;$d' > "$example_cpp"
[ -s "$example_cpp" ] || { echo "no C++ example in $readme"; exit 1; }
# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++20 $cflags -Werror -Wall "$example_cpp" $("$pkgconfig" --cflags --libs ornex_rt) -o "$scratch/cpp-example"
output=$("$scratch/cpp-example")
echo "C++ example: $output"
case $output in
  [1-9]*" edge pixels; strongest line ("*", "*") to ("*", "*")") ;;
  *) echo "unexpected output from the C++ example"; exit 1 ;;
esac

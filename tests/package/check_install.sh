#!/bin/sh
# check_install.sh CMAKE BUILD_DIR SCRATCH CONSUMER_DIR README CC CFLAGS PKG_CONFIG CXX [EMULATOR]
# Installs the build into a scratch prefix and builds the README's C example
# against it, once through find_package and once through pkg-config, and the
# README's C++ example through both, without setting the language standard.
# Nothing sets LD_LIBRARY_PATH: the programs and the installed tool (from a
# prefix moved elsewhere) must find the library themselves. A cross build
# passes the command that runs its programs here (qemu) as EMULATOR.
set -eu
cmake=$1 build=$2 scratch=$3 consumer=$4 readme=$5 cc=$6 cflags=$7 pkgconfig=$8 cxx=$9 emulator=${10:-}
prefix=$scratch/prefix

rm -rf "$scratch"
mkdir -p "$scratch"
"$cmake" --install "$build" --prefix "$prefix" >/dev/null

example=$scratch/readme_example.c
sed -n '/^```c$/,/^```$/p' "$readme" | sed '1d;$d' > "$example"
[ -s "$example" ] || { echo "no C example in $readme"; exit 1; }

libdir=$(dirname "$(find "$prefix" -name 'libornex_rt.so*' | head -n 1)")
unset LD_LIBRARY_PATH

check_output() {
  # shellcheck disable=SC2086
  output=$($emulator "$1")
  echo "$2: $output"
  case $output in
    "row 1, column 2 (ornex_rt "[0-9]*.[0-9]*.[0-9]*.[0-9]*", built "*" "*" "[0-9][0-9][0-9][0-9]")") ;;
    *) echo "unexpected output from the $2 build"; exit 1 ;;
  esac
}

example_cpp=$scratch/readme_example.cpp
sed -n '/^```cpp$/,/^```$/p' "$readme" | sed '1d;$d' > "$example_cpp"
[ -s "$example_cpp" ] || { echo "no C++ example in $readme"; exit 1; }

check_cpp_output() {
  # shellcheck disable=SC2086
  output=$($emulator "$1")
  echo "$2: $output"
  case $output in
    [1-9]*" edge pixels; strongest line ("*", "*") to ("*", "*")") ;;
    *) echo "unexpected output from the $2 build"; exit 1 ;;
  esac
}

"$cmake" -S "$consumer" -B "$scratch/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCONSUMER_SOURCE="$example" -DCONSUMER_CXX_SOURCE="$example_cpp" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$cflags" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$cflags" >/dev/null
"$cmake" --build "$scratch/by-cmake" >/dev/null
check_output "$scratch/by-cmake/consumer" find_package
check_cpp_output "$scratch/by-cmake/cpp_consumer" "C++ find_package"

PKG_CONFIG_PATH="$libdir/pkgconfig"
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086
"$cc" $cflags -Werror -Wall "$example" $("$pkgconfig" --cflags --libs ornex_rt) -o "$scratch/by-pkg-config"
check_output "$scratch/by-pkg-config" pkg-config

# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++20 $cflags -Werror -Wall "$example_cpp" $("$pkgconfig" --cflags --libs ornex_rt) -o "$scratch/cpp-example"
check_cpp_output "$scratch/cpp-example" "C++ pkg-config"

# The installed tool, where the build has one, runs from wherever the prefix
# is moved.
if [ -x "$prefix/bin/ornex" ]; then
  mv "$prefix" "$scratch/moved"
  "$scratch/moved/bin/ornex" --help >/dev/null
  echo "installed tool runs from a moved prefix"
fi

#!/bin/sh
# run-under-wine.sh WINE64 PREFIX PROGRAM [ARGUMENT ...]
# Runs a Windows program under Wine in a throwaway prefix of its own, made on
# first use. Programs started at once wait for one another while it is made.
set -eu
wine=$1 prefix=$2
shift 2
export WINEPREFIX="$prefix" WINEDEBUG=-all
# Without Mono and Gecko, the first start does not offer to install them.
export WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -e "$prefix/ready" ]; then
  mkdir -p "$prefix"
  (
    flock 9
    if [ ! -e "$prefix/ready" ]; then
      if ! timeout 300 "$wine" wineboot --init >"$prefix.log" 2>&1; then
        echo "wineboot --init failed or took over 5 minutes; see $prefix.log" >&2
        exit 1
      fi
      touch "$prefix/ready"
    fi
  ) 9>"$prefix.lock"
fi
exec "$wine" "$@"

#!/bin/sh
# The installed mmutil as a user's own project sees it: installs the build tree BUILD into a
# fresh prefix under WORK, then configures, builds and runs the program beside this script
# against that prefix twice, once through find_package(mmutil) and once through pkg-config,
# and checks that both found the prefix's mmutil of version VERSION.
#   check.sh BUILD WORK LIBDIR VERSION CXX
# LIBDIR is the library directory under the prefix, CXX the compiler.
set -eu
libdir=$3 version=$4 cxx=$5
build=$(cd "$1" && pwd)
work=$(mkdir -p "$2" && cd "$2" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
prefix=$work/prefix

# Configures the program in WORK/$1 with the further arguments, building and running it when
# the configuration reports "Found mmutil VERSION in $2".
consume() {
  dir=$work/$1 found="Found mmutil $version in $2"
  shift 2
  cmake -S "$here" -B "$dir" -DCMAKE_CXX_COMPILER="$cxx" "$@" | tee "$dir.log"
  grep -qxF -- "-- $found" "$dir.log" || { echo "expected: $found" >&2; exit 1; }
  cmake --build "$dir"
  "$dir/consumer"
}

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$prefix" > /dev/null

echo "== find_package(mmutil) in $prefix"
consume cmake "$prefix/$libdir/cmake/mmutil" -DCMAKE_PREFIX_PATH="$prefix"

echo "== pkg-config mmutil in $prefix"
PKG_CONFIG_LIBDIR=$prefix/$libdir/pkgconfig consume pkg-config "$prefix" -DUSE_PKG_CONFIG=ON

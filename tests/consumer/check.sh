#!/bin/sh
# The installed mmutil as a user's own project sees it: installs the build tree BUILD into a
# fresh prefix under WORK, then configures, builds and runs the program beside this script
# against that prefix twice, once through find_package(mmutil) and once through pkg-config.
#   check.sh BUILD WORK LIBDIR VERSION CXX
# LIBDIR is the library directory under the prefix, VERSION the version the prefix must
# hold, CXX the compiler.
set -eu
build=$1 work=$2 libdir=$3 version=$4 cxx=$5
here=$(cd "$(dirname "$0")" && pwd)
prefix=$work/prefix

rm -rf "$work"
cmake --install "$build" --prefix "$prefix" > /dev/null

echo "== find_package(mmutil $version EXACT) in $prefix"
cmake -S "$here" -B "$work/cmake" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$prefix" \
  -DMMUTIL_VERSION="$version"
found=$(sed -n 's/^mmutil_DIR:PATH=//p' "$work/cmake/CMakeCache.txt")
if [ "$found" != "$prefix/$libdir/cmake/mmutil" ]; then
  echo "mmutil was found in '$found', not in the installed prefix" >&2
  exit 1
fi
cmake --build "$work/cmake"
"$work/cmake/consumer"

echo "== pkg-config mmutil = $version in $prefix"
PKG_CONFIG_LIBDIR=$prefix/$libdir/pkgconfig \
  cmake -S "$here" -B "$work/pkg-config" -DCMAKE_CXX_COMPILER="$cxx" -DUSE_PKG_CONFIG=ON \
  -DMMUTIL_VERSION="$version"
cmake --build "$work/pkg-config"
"$work/pkg-config/consumer"

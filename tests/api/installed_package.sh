#!/bin/sh
# installed_package.sh CMAKE BUILD SOURCE: a project finds the installed package by find_package and by
# pkg-config, links with it and runs.
set -eu
cmake=$1 build=$2 source=$3
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
"$cmake" --install "$build" --prefix "$prefix/usr" >/dev/null
"$cmake" -G Ninja -S "$source/consumer" -B "$prefix/consumer" -DCMAKE_PREFIX_PATH="$prefix/usr" >/dev/null
"$cmake" --build "$prefix/consumer" >/dev/null
"$prefix/consumer/consumer"

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name clutterclassifier.pc)")
export PKG_CONFIG_PATH
flags=$(pkg-config --define-variable=prefix="$prefix/usr" --cflags --libs clutterclassifier)
tables=$(pkg-config --define-variable=prefix="$prefix/usr" --variable=membershipdir clutterclassifier)
# shellcheck disable=SC2086
${CXX:-c++} -std=c++11 -DMEMBERSHIP="\"$tables/\"" "$source/consumer/consumer.cpp" $flags -o "$prefix/direct"
LD_LIBRARY_PATH=$(dirname "$(find "$prefix/usr" -name 'libclutterclassifier.so')") "$prefix/direct"

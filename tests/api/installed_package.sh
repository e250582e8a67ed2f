#!/bin/sh
# installed_package.sh CMAKE BUILD SOURCE: a project finds the installed package by find_package and by
# pkg-config, links with it and runs. What is installed is hardened, names no directory of this machine
# and needs none.
set -eu
cmake=$1 build=$2 source=$3
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
"$cmake" --install "$build" --prefix "$prefix/first" >/dev/null
mv "$prefix/first" "$prefix/usr" # nothing of it may know where it was put first
"$cmake" -G Ninja -S "$source/consumer" -B "$prefix/consumer" -DCMAKE_PREFIX_PATH="$prefix/usr" >/dev/null
"$cmake" --build "$prefix/consumer" >/dev/null
"$prefix/consumer/consumer"

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name clutterclassifier.pc)")
export PKG_CONFIG_PATH
flags=$(pkg-config --cflags --libs clutterclassifier)
tables=$(pkg-config --variable=membershipdir clutterclassifier)
# shellcheck disable=SC2086
${CXX:-c++} -std=c++11 -DMEMBERSHIP="\"$tables/\"" "$source/consumer/consumer.cpp" $flags -o "$prefix/direct"
LD_LIBRARY_PATH=$(dirname "$(find "$prefix/usr" -name 'libclutterclassifier.so')") "$prefix/direct"

project=$(cd "$source/../.." && pwd)
if grep -rlF -e "$project" -e "$build" -e "$prefix" "$prefix/usr"; then echo "names a directory of this machine"; exit 1; fi
hardened() {
    for sign in 'GNU_RELRO' 'NOW' '__stack_chk_fail' 'Type: *DYN' "$2"; do
        readelf -hldsW "$1" | grep -q -- "$sign" || { echo "$1: no $sign"; exit 1; }
    done
    if readelf -dW "$1" | grep -E 'RUNPATH.*(\[:|::|:\])'; then exit 1; fi
}
hardened "$(find "$prefix/usr" -name libclutterclassifier.so)" __snprintf_chk
program=$prefix/usr/bin/clutterclassifier
[ -x "$program" ] || exit 0
hardened "$program" 'Flags:.* PIE'
hardened "$build/bin/clutterclassifier" 'Flags:.* PIE'
"$program" demo -o "$prefix/demo.png" --scan "$prefix/scan.uf" >/dev/null
if [ -n "$(find "$prefix/usr" -name clutterclassifier_containers.so)" ]; then
    "$program" convert "$prefix/scan.uf" "$prefix/scan.h5" >/dev/null
fi
"$build/bin/clutterclassifier" demo -o "$prefix/demo.png" >/dev/null
mv "$prefix/usr/share" "$prefix/elsewhere"
if "$program" demo -o "$prefix/demo.png" >/dev/null 2>&1; then echo "takes tables from elsewhere"; exit 1; fi

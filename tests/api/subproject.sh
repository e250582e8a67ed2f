#!/bin/sh
# subproject.sh CMAKE PROJECT: in another project's build this one is its library and nothing else: no
# tests, benches, program or package, and no settings of the host are changed.
set -eu
cmake=$1 project=$2
build=$(mktemp -d)
trap 'rm -rf "$build"' EXIT
"$cmake" -G Ninja -S "$project/tests/api/host_project" -B "$build" -DCMAKE_BUILD_TYPE=Debug \
    -DCLUTTERCLASSIFIER_SOURCE="$project" >/dev/null

tests=$(ctest --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: //p')
[ "$tests" = of_the_host ] || { echo "tests: $tests"; exit 1; }
[ ! -e "$build/CPackConfig.cmake" ] || { echo "a package of the host"; exit 1; }
[ ! -e "$build/compile_commands.json" ] || { echo "a setting of the host"; exit 1; }
ninja -C "$build" -n >"$build/steps"
grep -q 'libclutterclassifier.so' "$build/steps"
grep -q 'Linking CXX executable host' "$build/steps"
if grep -E 'Linking CXX executable [^h]|object clutterclassifier/(tests|bench|examples|cli|scan)/' "$build/steps"; then exit 1; fi
if ninja -C "$build" -t commands | grep -q -- ' -O'; then echo "a level that nobody asked for"; exit 1; fi

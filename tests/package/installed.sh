#!/bin/sh
# installed.sh: the packages in a clean root, used as the README says. Everything that is built here
# must give the same classes.
set -eu
cd "$(mktemp -d)"
examples=/usr/share/doc/clutterclassifier-doc/examples
fail() { echo "installed packages: $*" >&2; exit 1; }

# Nothing installed looks for libraries beside itself.
for file in /usr/bin/clutterclassifier /usr/lib/*/libclutterclassifier.so /usr/lib/*/clutterclassifier/*.so \
    /usr/lib/python3/dist-packages/clutterclassifier/_core*.so; do
    if readelf -d "$file" | grep -E 'RPATH|RUNPATH'; then fail "$file has a run path"; fi
done

# Shell: the program, its tables, the module of HDF5 and NetCDF.
clutterclassifier demo --scan scan.uf >demo.txt
grep -q 'HSS 0\.9' demo.txt || fail "$(cat demo.txt)"
clutterclassifier classify scan.uf -o classes.uf --plot classes.png >classes.txt
grep -q 'ground clutter' classes.txt
clutterclassifier convert scan.uf scan.h5 >/dev/null
clutterclassifier info scan.h5 | grep -q ODIM

# C and C++, by pkg-config and by CMake: the same classes, and none without the tables.
tables=$(pkg-config --variable=membershipdir clutterclassifier)
[ -d "$tables" ] || fail "membershipdir: $tables"
# shellcheck disable=SC2046
cc "$examples/classify_scan.c" $(pkg-config --cflags --libs clutterclassifier) -o by_pkg_config
./by_pkg_config "$tables/" >first.txt
grep -q 'ground clutter [1-9]' first.txt || fail "$(cat first.txt)"
if ./by_pkg_config /nowhere/ >/dev/null 2>&1; then fail "a success without tables"; fi
# shellcheck disable=SC2046
c++ -std=c++17 "$examples/probability.cpp" $(pkg-config --cflags --libs clutterclassifier) -o probability
./probability "$tables"
cat >CMakeLists.txt <<'CMAKE'
cmake_minimum_required(VERSION 3.16)
project(host C)
find_package(clutterclassifier REQUIRED)
add_executable(by_cmake ${EXAMPLES}/classify_scan.c)
target_link_libraries(by_cmake PRIVATE clutterclassifier::clutterclassifier)
get_target_property(tables clutterclassifier::clutterclassifier CLUTTERCLASSIFIER_MEMBERSHIP_DIR)
file(WRITE ${CMAKE_BINARY_DIR}/tables "${tables}/")
CMAKE
cmake -B build -DEXAMPLES="$examples" . >/dev/null
cmake --build build >/dev/null
build/by_cmake "$(cat build/tables)" >second.txt
cmp first.txt second.txt || fail "$(cat first.txt second.txt)"
cmake -S /test/consumer -B consumer >/dev/null
cmake --build consumer >/dev/null
consumer/consumer

# Python: the lines of the README.
cp scan.uf classes.png .. 2>/dev/null || :
sed -n '/^## From Python/,/^## /{/^```python$/,/^```$/p}' /test/README.md | sed '/^```/d' >readme.py
[ -s readme.py ] || fail "no Python in the README"
/usr/bin/python3 readme.py >python.txt
/usr/bin/python3 -c 'import clutterclassifier as cc; print(cc.__version__)'

# Manual pages and completion.
for page in clutterclassifier clutterclassifier-classify clutter_classify; do
    man -w "$page" >/dev/null || fail "no manual page $page"
done
bash -ic '. /usr/share/bash-completion/bash_completion; _completion_loader clutterclassifier; complete -p clutterclassifier' \
    2>/dev/null | grep -q _clutterclassifier || fail "no completion"
echo "installed packages: $(cat first.txt)"

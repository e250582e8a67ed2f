#!/bin/sh
# symbols.sh LIBRARY LIST: the library exports exactly the symbols of the list, under its plain soname.
# After a deliberate change: symbols.sh LIBRARY - > symbols.txt
set -eu
export LC_ALL=C
exported() { nm -D --defined-only "$1" | awk '{print $3}' | grep -v '^_init$\|^_fini$' | sort; }
if [ "$2" = - ]; then
    exported "$1"
    exit 0
fi
objdump -p "$1" | grep -q 'SONAME  *libclutterclassifier\.so$' || { echo "wrong soname"; exit 1; }
exported "$1" | diff "$2" - || { echo "the exported symbols changed (< listed, > exported)"; exit 1; }

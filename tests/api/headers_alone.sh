#!/bin/sh
# headers_alone.sh COMPILER STANDARD INCLUDE: every public header compiles alone, without a warning.
set -eu
for header in "$3"/clutterclassifier/*.h; do
    echo "#include \"$header\"" |
        "$1" -std="$2" -Wall -Wextra -Wpedantic -Werror -I"$3" -fsyntax-only -x c++ -
done

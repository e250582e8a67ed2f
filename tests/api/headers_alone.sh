#!/bin/sh
# headers_alone.sh COMPILER STANDARD INCLUDE: every public header compiles alone, without a warning.
# A C standard takes the headers that C hosts include.
set -eu
case $2 in
c++*) language=c++ headers=$(ls "$3"/clutterclassifier/*.h "$3"/clutterclassifier/*.hpp) ;;
*) language=c headers="$3/clutterclassifier/clutterclassifier.h $3/clutterclassifier/classifier.h" ;;
esac
for header in $headers; do
    echo "#include \"$header\"" |
        "$1" -std="$2" -Wall -Wextra -Wpedantic -Werror -I"$3" -fsyntax-only -x $language -
done

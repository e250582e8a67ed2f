#!/bin/sh
# fuzz_targets_test.sh PROJECT: a fuzzer calls every operation that takes a file or a text from outside,
# as its name says: of the public interface, and of scan/ except its formats, which readScan() chooses.
set -eu
cd "$1"
# Called by others that a fuzzer calls.
reached_by_another=' examineConfiguration clutter_reset '
readers=$(
    grep -hoE '\b(read|Read|OnRead|Load|GetVPR|GetCharacteristics|getfname|PackAgain)\w*\(' include/clutterclassifier/*.h
    grep -hoE '\bclutter_(create|reset)\(' include/clutterclassifier/classifier.h
    git ls-files 'scan/*.h' | grep -v '^scan/formats/.*/' | xargs grep -hE '^[A-Za-z]' |
        grep -oE '\b(read|load|parse|examine)[A-Z]\w*\(|\broleOfName\('
)
missing=
for reader in $(echo "$readers" | tr -d '(' | sort -u); do
    case $reached_by_another in *" $reader "*) continue ;; esac
    grep -rqE "\b$reader\(" fuzz --include='*_fuzzer.cpp' || missing="$missing $reader"
done
# What an archive run reads of an earlier one is tried in a test of the package.
for reader in $(grep -ohE '^(def read_stamp|class \w+Table)' python/clutterclassifier/archive/*.py | cut -d ' ' -f 2); do
    grep -qE "\b$reader\(" tests/python/archive/test_archive_state.py || missing="$missing $reader"
done
[ -z "$missing" ] || { echo "readers without a fuzzer:$missing"; exit 1; }

/* field_words.h - the fields of a scan as Universal Format fields: two letters and a scale each. */
#ifndef SCAN_FORMATS_UF_FIELD_WORDS_H
#define SCAN_FORMATS_UF_FIELD_WORDS_H

#include <cstddef>
#include <string>
#include <vector>

#include "scan/formats/writing/checked_words.h"
#include "scan/scan.h"

namespace scan {

constexpr short kMissingWord = -32768;

/* One field of all sweeps. */
struct FieldWords {
    std::string name;        // in the scan
    std::string letters;     // in the file: two, each name once
    int wordsPerUnit = 100;  // as fine as the field's values allow
};

/* The fields of all sweeps, each name once, with notes about values that have no word. Throws
 * std::runtime_error when there are more than a ray holds. */
std::vector<FieldWords> planFields(const Scan& scan, CheckedWords& checked);

/* The words of n values; null values: all missing. */
void fillFieldWords(const float* values, std::size_t n, int wordsPerUnit, short* words);

}  // namespace scan

#endif

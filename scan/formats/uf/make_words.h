/* make_words.h - sweeps of any origin as the words of a Universal Format file. */
#ifndef SCAN_FORMATS_UF_MAKE_WORDS_H
#define SCAN_FORMATS_UF_MAKE_WORDS_H

#include <string>
#include <vector>

#include "scan/scan.h"

class Cufrw;
struct Cufray;

namespace scan {

/* Position of a field among the first count of a ray; -1 when it is not there. */
int findField(const Cufray& ray, int count, const std::string& name);

/* Places the first count fields of a ray one after the other: header, then data. Throws
 * std::runtime_error when a record cannot hold them. */
void layOut(Cufray& ray, int count);

/* Fills words with the rays of all sweeps. A field that only some sweeps have is missing in the
 * others. Returns notes about what the words cannot hold; throws std::runtime_error when that is
 * the geometry, or when the fields do not fit a record. */
std::vector<std::string> makeWords(const Scan& scan, Cufrw& words);

}  // namespace scan

#endif

/* pairs.h - the pairs of tables of a directory, for comparison. */
#ifndef SCAN_MEMBERSHIP_PAIRS_H
#define SCAN_MEMBERSHIP_PAIRS_H

#include <string>
#include <utility>
#include <vector>

#include "scan/membership/table_file.h"

namespace scan {

/* The functions of one quantity. */
struct TablePair {
    std::string tag;
    std::string heading;  // "texture of horizontal reflectivity, dB"
    std::vector<TablePoint> precipitation, clutter;
};

/* All quantities that have both tables, in the order of the inputs. Throws std::runtime_error with
 * file and line where one cannot be read, and where there are none. */
std::vector<TablePair> readPairs(const std::string& directory);

/* The abscissas between which a pair decides anything, with the points beside them. */
std::pair<double, double> decidingRange(const TablePair& pair);

}  // namespace scan

#endif

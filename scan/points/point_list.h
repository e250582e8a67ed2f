/* point_list.h - lists of points in text files. */
#ifndef SCAN_POINTS_POINT_LIST_H
#define SCAN_POINTS_POINT_LIST_H

#include <cstddef>
#include <string>
#include <vector>

namespace scan {

/* Where values are wanted: range in m and azimuth in degrees, or x and y in m. */
struct Points {
    std::vector<float> first, second;
    [[nodiscard]] std::size_t size() const { return first.size(); }
};

/* Reads a regular file or a pipe with two numbers on each line that is not blank. Throws
 * std::runtime_error with the reason, also for lines and lists of a length that no list has. */
Points readPoints(const std::string& path);

}  // namespace scan

#endif

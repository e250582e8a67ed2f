/* table_file.h - files of membership functions: their names, reading with line numbers, writing. */
#ifndef SCAN_MEMBERSHIP_TABLE_FILE_H
#define SCAN_MEMBERSHIP_TABLE_FILE_H

#include <string>
#include <vector>

namespace scan {

/* Classes, in the order of the suffixes of file names. */
enum class TableClass { kClutter, kPrecipitation, kSea, kTurbine };
constexpr int kTableClasses = 4;

/* "cal_mf_sZhh_clutter.dat" */
std::string tableFileName(const std::string& tag, TableClass tableClass);

/* Whether a text is a finite number and nothing else, in any locale. */
bool parseNumber(const std::string& text, double& value);

struct TablePoint {
    double x;
    double degree;
    int line = 0;  // of the file, from 1
};

/* Something wrong with a file, or worth knowing. */
struct Finding {
    std::string file;  // name within its directory
    int line;          // 0: the file as a whole
    bool isError;
    std::string text;
};

/* One file. Tokens that are no pair of numbers are findings, and the points end there. */
struct TableFile {
    std::vector<TablePoint> points;
    std::vector<Finding> findings;
};
TableFile readTableFile(const std::string& directory, const std::string& file);

/* Writes a file completely or not at all. Throws std::runtime_error. */
void writeTableFile(const std::string& path, const std::vector<TablePoint>& points);

/* The degree that the library gives a value: linear between the points, constant beyond them. */
double degreeAt(const std::vector<TablePoint>& points, double x);

}  // namespace scan

#endif

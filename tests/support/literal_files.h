/*
 * literal_files.h - text files written and read one number at a time with the C library, as in the
 * definitions. For sound files and short tokens only.
 */
#ifndef TESTS_SUPPORT_LITERAL_FILES_H
#define TESTS_SUPPORT_LITERAL_FILES_H

#include <string>
#include <vector>

namespace literal {

struct Matrix {
    int rows = 0, columns = 0;
    std::vector<float> cells; /* column-major */
};

Matrix readMatrix(const std::string& path, float nanValue);

/* Rows of values with their times (null: without). */
void writeColumns(const std::string& path, const unsigned* times, const float* data, int nrows,
                  int ncols, const char* format);

}  // namespace literal

#endif

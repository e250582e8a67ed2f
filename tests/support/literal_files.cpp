#include "support/literal_files.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace literal {

Matrix readMatrix(const std::string& path, float nanValue) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    int c = 0;
    while ((c = std::fgetc(file)) != EOF && c != '\n' && c != '\r') {
    }
    const long endOfLine = std::ftell(file);
    Matrix matrix;
    int total = 0;
    char token[1024], nan[64];
    std::snprintf(nan, sizeof nan, "%1.6f", nanValue);
    std::rewind(file);
    while (std::fscanf(file, "%1023s", token) == 1) {
        ++total;
        if (std::ftell(file) <= endOfLine) ++matrix.columns;
    }
    if (matrix.columns == 0 && total >= 1) matrix.columns = 1;
    matrix.rows = matrix.columns ? total / matrix.columns : 0;
    matrix.cells.resize(static_cast<std::size_t>(matrix.rows * matrix.columns));
    std::rewind(file);
    for (int r = 0; r < matrix.rows; ++r) {
        for (int k = 0; k < matrix.columns; ++k) {
            if (std::fscanf(file, "%1023s", token) != 1) break;
            if (std::strcmp(token, "nan") == 0) std::strcpy(token, nan);
            matrix.cells[static_cast<std::size_t>(r + matrix.rows * k)] =
                static_cast<float>(std::atof(token));
        }
    }
    std::fclose(file);
    return matrix;
}

void writeColumns(const std::string& path, const unsigned* times, const float* data, int nrows,
                  int ncols, const char* format) {
    using namespace std::chrono;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    for (int r = 0; r < nrows; ++r) {
        if (times != nullptr) {
            const sys_seconds at{seconds(times[r])};
            const year_month_day date(floor<days>(at));
            const hh_mm_ss clock(at - floor<days>(at));
            std::fprintf(file, "%.4d  %.2u  %.2u  %.2d  %.2d  %.2d ", static_cast<int>(date.year()),
                         static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                         static_cast<int>(clock.hours().count()),
                         static_cast<int>(clock.minutes().count()),
                         static_cast<int>(clock.seconds().count()));
        }
        for (int c = 0; c < ncols; ++c) std::fprintf(file, format, data[r * ncols + c]);
        std::fprintf(file, "\n");
    }
    std::fclose(file);
}

}  // namespace literal

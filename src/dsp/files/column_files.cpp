/*
 * Column files (docs/formats/column-file.md): rows of numbers as text, with or without their times;
 * and dumps of a single column, as text or as in memory.
 */
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/array.h"
#include "base/calendar.h"
#include "base/files/file.h"
#include "base/number.h"
#include "base/text_writer.h"
#include "clutterclassifier/CDSP.h"
#include "dsp/files/text_matrix.h"

using clutter::base::adopt;
using clutter::base::File;
using clutter::base::openFile;
using clutter::base::TextWriter;
using clutter::dsp::TableShape;

namespace {

/* Year, month, day, hour, minute, second. */
constexpr int kTimeColumns = 6;
constexpr int kOverwrite = 1;
constexpr int kDecimalsOfColumn = 4;

/* Hosts pass "NULL" for "no file". */
bool isNoPath(const char* path) {
    return path == nullptr || std::strcmp(path, "NULL") == 0;
}

void writeTime(unsigned int seconds, TextWriter& out) {
    const clutter::base::DateTime t = clutter::base::splitSeconds(seconds);
    char text[96];
    std::snprintf(text, sizeof text, "%.4d  %.2d  %.2d  %.2d  %.2d  %.2d ", t.year, t.month, t.day,
                  t.hour, t.minute, t.second);
    out.text(text);
}

void writeValue(float value, int precision, TextWriter& out) {
    switch (precision) {
        case 0:
            out.general(static_cast<double>(value));
            break;
        case -1:
            out.fixed(static_cast<double>(value), 0);
            break;
        case 1:
        case 2:
            out.fixed(static_cast<double>(value), precision);
            break;
        default:
            out.fixed(static_cast<double>(value), 3);
    }
    out.text(" ");
}

/* The times of a table whose first six columns are a date and time. */
std::unique_ptr<unsigned int[]> timesOf(const float* cells, std::size_t rows) {
    std::unique_ptr<unsigned int[]> times(new unsigned int[rows]);
    for (std::size_t row = 0; row < rows; ++row) {
        const auto part = [&](std::size_t column) {
            return clutter::base::truncateToInt(static_cast<double>(cells[row + rows * column]));
        };
        times[row] =
            clutter::base::secondsSince1970({part(0), part(1), part(2), part(3), part(4), part(5)});
    }
    return times;
}

}  // namespace

void CDSP::SaveArrayOnFile(float* x, int n, char* path) {
    if (x == nullptr && n > 0) {
        return;
    }
    const File file = openFile(path, "a+t");
    if (!file) {
        return;
    }
    TextWriter out(file.get());
    for (int i = 0; i < n; ++i) {
        out.fixed(static_cast<double>(x[i]), kDecimalsOfColumn).text("\n");
    }
}

void CDSP::SaveDataToFile(char* path, unsigned int* times, float* data, int nrows, int ncols,
                          int mode, int precision) {
    if (nrows < 1 || ncols < 1 || isNoPath(path) || data == nullptr) {
        return;
    }
    const File file = openFile(path, mode == kOverwrite ? "wt" : "a+t");
    if (!file) {
        return;
    }
    TextWriter out(file.get());
    for (int row = 0; row < nrows; ++row) {
        if (times != nullptr) {
            writeTime(times[row], out);
        }
        const float* values = data + static_cast<std::ptrdiff_t>(row) * ncols;
        for (int column = 0; column < ncols; ++column) {
            writeValue(values[column], precision, out);
        }
        out.text("\n");
    }
}

void CDSP::savedata2binary(char* path, float* x, int n, int mode) {
    if (n < 1 || x == nullptr || isNoPath(path)) {
        return;
    }
    const File file = openFile(path, mode == kOverwrite ? "wb" : "a+b");
    if (file) {
        std::fwrite(x, sizeof(float), static_cast<std::size_t>(n), file.get());
    }
}

int CDSP::OnReadASCIIDataFile(char* path, float** data, int& nrows, int& ncols, float nanValue) {
    if (data == nullptr) {
        return -1;
    }
    const auto bytes = clutter::base::readTextFile(path);
    if (!bytes) {
        return -1;
    }
    const std::string_view text = clutter::dsp::textOf(*bytes);
    const TableShape shape = clutter::dsp::measureMatrix(text);
    if (!shape.fitsInts()) {
        return -1;
    }
    adopt(*data, clutter::dsp::unpackMatrix(text, shape, nanValue));
    nrows = static_cast<int>(shape.rows);
    ncols = static_cast<int>(shape.columns);
    return 1;
}

void CDSP::LoadDataFromFile(char* path, unsigned int** times, float** data, int& nrows, int& ncols,
                            float nanValue) {
    if (times == nullptr || data == nullptr) {
        return;
    }
    float* read = nullptr;
    int rows = 0, columns = 0;
    if (OnReadASCIIDataFile(path, &read, rows, columns, nanValue) != 1) {
        return;
    }
    const std::unique_ptr<float[]> cells(read);
    if (columns < kTimeColumns) {
        rows = columns = 0;
    }
    nrows = rows;
    ncols = std::max(columns - kTimeColumns, 0);
    const std::size_t kept = clutter::base::cellCount(ncols, nrows);
    std::unique_ptr<float[]> values(new float[kept]);
    std::copy_n(cells.get() + clutter::base::cellCount(kTimeColumns, rows), kept, values.get());
    adopt(*times, timesOf(cells.get(), static_cast<std::size_t>(rows)));
    adopt(*data, std::move(values));
}

/*
 * Reads a column file with and without times, writes it, reads what was written and writes that
 * again: sizes and text are the same. Numbers are read column by column and written row by row.
 */
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "clutterclassifier/CDSP.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"
#include "fuzz/text/text_file.h"

namespace {

using namespace clutter::fuzz;

constexpr int kOverwrite = 1;
constexpr int kSixDigits = 0;

struct Table {
    float* values = nullptr;
    int rows = 0, columns = 0;

    Table() = default;
    ~Table() { delete[] values; }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    int read(std::string path) {
        return CDSP().OnReadASCIIDataFile(path.data(), &values, rows, columns, -1.0f);
    }
    /* Its columns as rows: the file's columns are this table's rows. */
    void write(std::string path) const {
        CDSP().SaveDataToFile(path.data(), nullptr, values, columns, rows, kOverwrite, kSixDigits);
    }
};

void writeAndRead(const Table& table) {
    const std::string first = scratch().file("first"), second = scratch().file("second");
    table.write(first);
    Table back;
    require(back.read(first) == 1, "what was written can be read");
    require(back.rows == table.columns && back.columns == table.rows, "rows and columns");
    // The same order of values as before, for the same text.
    Table again;
    back.write(second);
    require(again.read(second) == 1 && again.rows == table.rows, "and once more");
    const std::string third = scratch().file("third");
    again.write(third);
    requireSameText(first, third);
}

void readWithTimes(std::string path, const Table& table) {
    float* values = nullptr;
    unsigned* times = nullptr;
    int rows = 0, columns = 0;
    CDSP().LoadDataFromFile(path.data(), &times, &values, rows, columns, -1.0f);
    if (table.columns >= 6) {
        require(rows == table.rows && columns == table.columns - 6, "six columns are the time");
        require(sameBits(values, table.values + 6 * rows, rows * columns), "the others are values");
    }
    delete[] values;
    delete[] times;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string in = inputFile(data, size);
    Table table;
    require(table.read(in) == 1, "every text is a table, if an empty one");
    readWithTimes(in, table);
    if (isSmall(table.rows, table.columns) && allFinite(table.values, table.rows, table.columns)) {
        writeAndRead(table);
    }
    return 0;
}

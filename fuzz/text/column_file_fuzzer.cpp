/*
 * Reads a column file with and without times, writes it, reads what was written and writes that
 * again: sizes and text are the same. Numbers are read column by column and written row by row.
 * Then its values in every other way of writing.
 */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "clutterclassifier/CDSP.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"
#include "fuzz/text/text_file.h"

namespace {

using namespace clutter;
using namespace clutter::fuzz;

constexpr int kOverwrite = 1, kAppend = 0;
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

/* Fewer digits, appended, as one column, as in memory: as many values as there were. */
void writeOtherwise(const Table& table) {
    std::string path = scratch().file("otherwise");
    const int cells = table.rows * table.columns;
    for (const int precision : {-1, 1, 2, 3}) {
        CDSP().SaveDataToFile(path.data(), nullptr, table.values, table.rows, table.columns,
                              precision == -1 ? kOverwrite : kAppend, precision);
    }
    Table back;
    require(back.read(path) == 1 && back.rows == 4 * table.rows, "rows are appended");
    std::string column = scratch().file("column");
    std::filesystem::remove(column);
    CDSP().SaveArrayOnFile(table.values, cells, column.data());
    require(back.read(column) == 1 && back.rows == cells && back.columns == 1, "one value a line");
    CDSP().savedata2binary(column.data(), table.values, cells, kOverwrite);
    const test::ByteVector bytes = test::readFile(column);
    require(bytes.size() == sizeof(float) * static_cast<std::size_t>(cells) &&
                std::memcmp(bytes.data(), table.values, bytes.size()) == 0,
            "values as in memory");
}

struct TimedTable {
    float* values = nullptr;
    unsigned* times = nullptr;
    int rows = 0, columns = 0;

    explicit TimedTable(std::string path) {
        CDSP().LoadDataFromFile(path.data(), &times, &values, rows, columns, -1.0f);
    }
    ~TimedTable() {
        delete[] values;
        delete[] times;
    }
    TimedTable(const TimedTable&) = delete;
    TimedTable& operator=(const TimedTable&) = delete;
};

void readWithTimes(const std::string& in, const Table& table) {
    const TimedTable timed(in);
    if (table.columns < 6) {
        return;
    }
    const int rows = timed.rows, columns = timed.columns;
    require(rows == table.rows && columns == table.columns - 6, "six columns are the time");
    require(sameBits(timed.values, table.values + 6 * rows, rows * columns), "others are values");
    if (!isSmall(rows, columns) || !allFinite(timed.values, rows, columns)) {
        return;
    }
    std::string path = scratch().file("timed");
    CDSP().SaveDataToFile(path.data(), timed.times, timed.values, rows, columns, kOverwrite, 3);
    const TimedTable back(path);
    require(back.rows == rows && back.columns == columns, "a table keeps its sizes");
    require(std::equal(back.times, back.times + rows, timed.times), "times come back as written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string in = inputFile(data, size);
    Table table;
    require(table.read(in) == 1, "every text is a table, if an empty one");
    readWithTimes(in, table);
    if (isSmall(table.rows, table.columns) && allFinite(table.values, table.rows, table.columns)) {
        writeAndRead(table);
        writeOtherwise(table);
    }
    return 0;
}

/*
 * Reads an ASCII grid, writes it, reads what was written and writes that again: header and text are
 * the same.
 */
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "clutterclassifier/CDSP.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"
#include "fuzz/text/text_file.h"

namespace {

using namespace clutter::fuzz;

constexpr int kColumnMajor = 0;

struct Grid {
    float* cells = nullptr;
    int rows = 0, columns = 0;
    float x = 0, y = 0, cellSize = 0;
    char nodata[1024] = "";

    Grid() = default;
    ~Grid() { delete[] cells; }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    int read(std::string path) {
        return CDSP().ReadDataFromGISformat(path.data(), &cells, rows, columns, x, y, cellSize,
                                            nodata);
    }
    void write(std::string path) {
        CDSP().SaveDataToGISformat(path.data(), cells, rows, columns, 0, rows, 0, columns, x, y,
                                   cellSize, nodata, kColumnMajor);
    }
    bool hasNumbers() const {
        return allFinite(cells, rows, columns) && std::isfinite(x) && std::isfinite(y) &&
               std::isfinite(cellSize);
    }
};

void writeAndRead(Grid& grid) {
    if (grid.nodata[0] == '\0') {
        return;  // a word that begins with a zero cannot be written
    }
    const std::string first = scratch().file("first"), second = scratch().file("second");
    grid.write(first);
    Grid back;
    require(back.read(first) == 1, "what was written can be read");
    require(back.rows == grid.rows && back.columns == grid.columns, "a grid keeps its sizes");
    require(std::strcmp(back.nodata, grid.nodata) == 0, "a grid keeps its mark of no data");
    if (!grid.hasNumbers()) {
        return;
    }
    back.write(second);
    requireSameText(first, second);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string in = inputFile(data, size);
    Grid grid;
    if (grid.read(in) == 1 && isSmall(grid.rows, grid.columns)) {
        writeAndRead(grid);
    }
    return 0;
}

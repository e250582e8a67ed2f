/* Reads an ASCII grid, writes it and reads what was written. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "clutterclassifier/CDSP.h"
#include "input_file.h"

namespace {

/* Larger grids take longer to write than there is to learn from them. */
constexpr long long kMostCellsToCopy = 4096;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = clutter::fuzz::inputFile(data, size);
    std::string out = clutter::fuzz::scratch().file("written");
    CDSP dsp;
    float* cells = nullptr;
    int rows = 0, columns = 0;
    float x = 0, y = 0, cellSize = 0;
    char nodata[1024];
    const int result =
        dsp.ReadDataFromGISformat(in.data(), &cells, rows, columns, x, y, cellSize, nodata);
    const long long count = static_cast<long long>(rows) * columns;
    if (result == 1 && count > 0 && count < kMostCellsToCopy) {
        dsp.SaveDataToGISformat(out.data(), cells, rows, columns, 0, rows, 0, columns, x, y,
                                cellSize, nodata, 0);
        int rowsBack = 0, columnsBack = 0;
        dsp.ReadDataFromGISformat(out.data(), &cells, rowsBack, columnsBack, x, y, cellSize,
                                  nodata);
        if (rowsBack != rows || columnsBack != columns) std::abort();
    }
    delete[] cells;
    return 0;
}

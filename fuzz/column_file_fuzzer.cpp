/* Reads a column file with and without times, writes it and reads what was written. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "clutterclassifier/CDSP.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = clutter::fuzz::inputFile(data, size);
    std::string out = clutter::fuzz::scratch().file("written");
    CDSP dsp;
    float* values = nullptr;
    unsigned* times = nullptr;
    int rows = 0, columns = 0;
    dsp.LoadDataFromFile(in.data(), &times, &values, rows, columns, -1.0f);
    dsp.SaveDataToFile(out.data(), times, values, rows, columns, 1, rows % 4);
    if (dsp.OnReadASCIIDataFile(in.data(), &values, rows, columns, -1.0f) != 1) std::abort();
    if (rows > 0) {
        // Read column by column, written row by row.
        dsp.SaveDataToFile(out.data(), nullptr, values, columns, rows, 1, 0);
        int rowsBack = 0, columnsBack = 0;
        dsp.OnReadASCIIDataFile(out.data(), &values, rowsBack, columnsBack, -1.0f);
        if (rowsBack != columns || columnsBack != rows) std::abort();
    }
    delete[] values;
    delete[] times;
    return 0;
}

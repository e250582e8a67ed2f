/* Reads a polar data file in every layout, shortens it, writes it as a single-parameter product and
 * reads what was written. The first byte chooses the layout. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cpluvek.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const int layouts[] = {252, 260, 280, 0};
    const int layout = layouts[data[0] % 4];
    std::string in = clutter::fuzz::inputFile(data + 1, size - 1);
    std::string out = clutter::fuzz::scratch().file("written");
    CThuPolDaFor polar;
    Cpluvek records[8];
    const int result = polar.ReadPolarData(in.data(), records, layout, data[0] & 4);
    if (polar.PackAgainDataFiles(in.data(), out.data(), layout) == 1) {
        Cpluvek packed[8];
        polar.ReadPolarData(out.data(), packed, layout, 1);
    }
    if (result != 1) return 0;
    polar.SortPolarDataRays(records);
    records[0].radarid = 1120;
    if (polar.WriteSingleParameterData(out.c_str(), records, records + 1) != 1) std::abort();
    if (polar.ReadPolarData(out.data(), records, layout, 0) != 1) std::abort();
    return 0;
}

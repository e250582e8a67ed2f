/*
 * Reads a polar data file in every layout, shortens it, writes it as every single-parameter product
 * and reads what was written. The first byte chooses the layout, the second one the product.
 */
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cpluvek.h"
#include "formats/polar/layout.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"

namespace {

using namespace clutter::fuzz;
using clutter::formats::kSingleParameterProducts;
using clutter::formats::Storage;

/* Larger scans take longer to write than there is to learn from them. */
constexpr int kMaxCells = 4096;
constexpr int kMaxFields = 8;

void requireSound(const Cpluvek* records) {
    require(records[0].nrecords >= 1 && records[0].nrecords <= kMaxFields, "fields of a product");
    for (int f = 0; f < records[0].nrecords; ++f) {
        require(records[f].nrays > 0 && records[f].ngates > 0, "a scan has rays and gates");
        require(records[f].data != nullptr, "every field has values");
    }
}

void shorten(CThuPolDaFor& polar, std::string in, std::string out, int layout) {
    if (polar.PackAgainDataFiles(in.data(), out.data(), layout) != 1) {
        return;
    }
    Cpluvek whole[kMaxFields], packed[kMaxFields];
    polar.ReadPolarData(in.data(), whole, layout, 1);
    require(polar.ReadPolarData(out.data(), packed, layout, 1) == 1, "shortened files can be read");
    require(packed[0].nrays == whole[0].nrays, "no ray is lost");
    require(packed[0].ngates < whole[0].ngates, "rays become shorter");
}

void writeAndRead(CThuPolDaFor& polar, Cpluvek* records, std::string out, int choice) {
    const auto& product = kSingleParameterProducts[static_cast<std::size_t>(choice) %
                                                   std::size(kSingleParameterProducts)];
    records[0].radarid = product.code;
    require(polar.WriteSingleParameterData(out.c_str(), records, records + 1) == 1,
            "every single-parameter product can be written");
    Cpluvek back[kMaxFields];
    require(polar.ReadPolarData(out.data(), back, 0, 0) == 1, "what was written can be read");
    require(back[0].nrays == records[0].nrays && back[0].ngates == records[0].ngates,
            "a product keeps its sizes");
    if (product.storage == Storage::kFloat32) {
        require(sameBits(back[0].data, records[0].data, cellsOf(back[0])),
                "floats come back as they were written");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const int layouts[] = {252, 260, 280, 0};
    const int layout = layouts[data[0] % 4];
    std::string in = inputFile(data + 2, size - 2);
    const std::string out = scratch().file("written");
    CThuPolDaFor polar;
    Cpluvek records[kMaxFields];
    if (polar.ReadPolarData(in.data(), records, layout, data[0] & 4) != 1) {
        return 0;
    }
    requireSound(records);
    if (cellsOf(records[0]) > kMaxCells) {
        return 0;
    }
    shorten(polar, in, out, layout);
    polar.SortPolarDataRays(records);
    writeAndRead(polar, records, out, data[1]);
    return 0;
}

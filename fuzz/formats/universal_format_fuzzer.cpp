/*
 * Reads a Universal Format file, converts it to records and back, writes the result and reads it
 * again: words, geometry and converted values are the same.
 */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cufrw.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"

namespace {

using namespace clutter::fuzz;

constexpr int kMaxFields = 20;

void requireSameRay(const Cufray& a, const Cufray& b) {
    require(a.nfields == b.nfields && a.ngates == b.ngates, "a ray keeps its fields and gates");
    require(a.azimuth == b.azimuth && a.elevation == b.elevation, "a ray keeps its direction");
    require(std::equal(a.data, a.data + std::ptrdiff_t{a.nfields} * a.ngates, b.data),
            "a ray keeps its words");
}

void requireSameRecords(Cufrw& written, Cufrw& read, int fields) {
    Cpluvek a[kMaxFields], b[kMaxFields];
    written.uf2pluvek(a);
    read.uf2pluvek(b);
    for (int f = 0; f < fields; ++f) {
        requireSameScan(a[f], b[f]);
    }
}

void writeAndRead(Cufrw& made, std::string out) {
    require(made.write2file(out.data()) == 0, "rays made from records can be written");
    Cufrw read;
    require(read.readfile(out.data()) == 1, "what was written can be read");
    require(read.nrays == made.nrays, "no ray is lost");
    for (int r = 0; r < made.nrays; ++r) {
        requireSameRay(made.rays[r], read.rays[r]);
    }
    requireSameRecords(made, read, made.rays[0].nfields);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = inputFile(data, size);
    std::string out = scratch().file("written");
    Cufrw uf;
    uf.readfile(in.data());
    require(uf.nrays == 0 || uf.rays != nullptr, "rays that are counted are there");
    Cpluvek records[kMaxFields];
    uf.uf2pluvek(records);
    uf.write2file(out.data());
    // Fields that lay over each other may have become anything: only that it can be read matters.
    Cufrw back;
    back.readfile(out.data());
    Cufrw made;
    if (made.pluvek2uf(records) == 1 && made.nrays > 0) {
        writeAndRead(made, out);
    }
    return 0;
}

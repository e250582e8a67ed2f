/*
 * Reads a Universal Format file, converts it to records and back, writes the result and reads it
 * again: words, geometry and converted values are the same.
 */
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cufrw.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/input_values.h"
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

template <class Word>
std::array<unsigned char, sizeof(Word)> bytesOf(Word word) {
    return std::bit_cast<std::array<unsigned char, sizeof(Word)>>(word);
}

/* Words change their byte order, one by one as in a row. */
template <class Word>
void requireSwapped(Cufrw& uf, Word word) {
    Word swapped = word;
    uf.endian_swap(swapped);
    for (std::size_t byte = 0; byte < sizeof word; ++byte) {
        require(bytesOf(swapped)[byte] == bytesOf(word)[sizeof word - 1 - byte], "bytes reversed");
    }
}

void swapWords(const std::uint8_t* data, std::size_t size) {
    InputValues values(data, size);
    const auto word = [&] { return values.byte() << 8 | values.byte(); };
    Cufrw uf;
    requireSwapped(uf, static_cast<unsigned short>(word()));
    requireSwapped(uf, static_cast<short>(word()));
    requireSwapped(uf, static_cast<unsigned>(word()) << 16 | static_cast<unsigned>(word()));
    requireSwapped(uf, static_cast<int>(static_cast<unsigned>(word()) << 16));
    short row[3] = {static_cast<short>(word()), static_cast<short>(word()), 258};
    const short first = row[0];
    uf.endian_swap(row, 3);
    uf.endian_swap(row[0]);
    require(row[0] == first && row[2] == 513, "a row of words as each of them");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    swapWords(data, size);
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

/* Reads a Universal Format file, converts it, writes it and reads what was written. */
#include <cstddef>
#include <cstdint>
#include <string>

#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cufrw.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = clutter::fuzz::inputFile(data, size);
    std::string out = clutter::fuzz::scratch().file("written");
    Cufrw uf;
    uf.readfile(in.data());
    Cpluvek records[20];
    uf.uf2pluvek(records);
    uf.write2file(out.data());
    // Fields that lay over each other may have become anything: only that it can be read matters.
    Cufrw back;
    back.readfile(out.data());
    back.uf2pluvek(records);
    Cufrw converted;
    if (converted.pluvek2uf(records) == 1) converted.write2file(out.data());
    return 0;
}

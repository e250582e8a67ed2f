/* Reads a field record file into an array of records, writes it and reads what was written. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "clutterclassifier/Cpluvek.h"
#include "input_file.h"

namespace {

/* The reader trusts its caller to hand over enough records: hand over what the file could fill. */
constexpr std::size_t kSmallestBlockBytes = 1060;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string in = clutter::fuzz::inputFile(data, size);
    const std::string out = clutter::fuzz::scratch().file("written");
    Cpluvek* records = new Cpluvek[size / kSmallestBlockBytes + 1];
    const bool sound = records->ReadDataFromFile(in.c_str()) == 1;
    if (sound) {
        if (records->WriteDataToFile(out.c_str()) != 1) std::abort();
        records->ReadDataFromFile(out.c_str());
    }
    delete[] records;
    return 0;
}

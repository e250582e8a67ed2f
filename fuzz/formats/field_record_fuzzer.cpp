/*
 * Reads a field record file into an array of records, writes it and reads what was written: the
 * same scan, bit for bit where values are stored as floats.
 */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "clutterclassifier/Cpluvek.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"

namespace {

using namespace clutter::fuzz;

/* The reader trusts its caller to hand over enough records: hand over what the file could fill. */
constexpr std::size_t kSmallestBlockBytes = 1060;

constexpr int kStoredAsFloats = 0;

/* Whether all blocks have the grid of the first, as every writer makes them. */
bool isUniform(const Cpluvek* records) {
    return std::all_of(records, records + records[0].nrecords, [&](const Cpluvek& record) {
        return record.ngates == records[0].ngates && record.nrays == records[0].nrays &&
               record.nrecords == records[0].nrecords && record.datatype == kStoredAsFloats;
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string in = inputFile(data, size);
    const std::string out = scratch().file("written");
    const std::size_t room = size / kSmallestBlockBytes + 1;
    const auto records = std::make_unique<Cpluvek[]>(room);
    if (records[0].ReadDataFromFile(in.c_str()) != 1) {
        return 0;
    }
    if (static_cast<std::size_t>(records[0].nrecords) > room) {
        return 0;  // a later block says so, the reader went by the first one
    }
    require(records[0].WriteDataToFile(out.c_str()) == 1, "what was read can be written");
    const auto back = std::make_unique<Cpluvek[]>(room);
    const int result = back[0].ReadDataFromFile(out.c_str());
    if (!isUniform(records.get())) {
        return 0;
    }
    require(result == 1, "what was written can be read");
    for (int i = 0; i < records[0].nrecords; ++i) {
        requireSameScan(records[i], back[i]);
    }
    return 0;
}

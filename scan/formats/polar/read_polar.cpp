/* The library's reader, with a layout where the product needs one, and what damage it hides. */
#include "scan/formats/polar/read_polar.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "formats/polar/packing.h"
#include "scan/formats/record/read_record.h"
#include "scan/opened_file.h"
#include "scan/scan_error.h"

namespace scan {
namespace {

constexpr int kMaxFields = 8;
constexpr int kWordProduct = 2111;
constexpr int kPaddedProduct = 2211;  // its last field is the same value everywhere
constexpr int kPaddedField = 6;

/* Products whose gates were packed in several ways. */
bool needsLayout(int product) {
    return product == kPaddedProduct || product == 2212;
}

void requireRead(const std::string& path, int result) {
    if (result == 1) {
        return;
    }
    if (result == -2) {
        throw std::runtime_error("holds an unknown product");
    }
    if (result == 0) {
        failReading(path, "cannot be read");
    }
    throw std::runtime_error(
        "has no rays or gates, or declares more of them than its bytes can hold");
}

std::string nameOf(int product, std::size_t field) {
    if (product == kWordProduct) {
        return "CI";
    }
    if (field > 0) {
        return "layer";
    }
    std::string name = std::to_string(product);
    name.insert(name.begin(), 'P');
    return name;
}

/* Some products leave their fields without a name. */
void nameFields(int product, std::vector<Field>& fields) {
    if (product == kPaddedProduct) {
        fields.erase(fields.begin() + kPaddedField);
    }
    for (std::size_t f = 0; f < fields.size(); ++f) {
        if (fields[f].name.empty()) {
            fields[f].name = nameOf(product, f);
        }
    }
}

/* Past the end of a file, the library repeats what came before it. */
void checkLength(const std::string& path, int product, int layout, Scan& scan) {
    const Sweep& sweep = scan.sweeps[0];
    const std::uintmax_t expected =
        clutter::formats::bytesAskedFor(product, layout, sweep.nrays, sweep.ngates);
    const std::uintmax_t held = std::filesystem::file_size(path);
    if (held < expected) {
        scan.damage.push_back("The file ends " + std::to_string(expected - held) +
                              " bytes early: the missing part repeats what came before it.");
    }
}

}  // namespace

Scan readPolarData(const std::string& path, int layout) {
    Cpluvek records[kMaxFields];
    CThuPolDaFor polar;
    std::string name = path;
    requireRead(path, polar.ReadPolarData(name.data(), records, layout, 1));
    const int product = records[0].radarid;
    if (layout == 0 && needsLayout(product)) {
        throw ScanError(Failure::kLayoutNeeded,
                        "holds product " + std::to_string(product) +
                            ", packed in a layout that the file does not state");
    }
    Scan scan = scanFromRecords(records, records[0].nrecords);
    scan.format = "polar data, product " + std::to_string(product);
    scan.radarConstantDb = records[0].radarconst;
    scan.hasRadarConstant = records[0].radarconst > 0;
    nameFields(product, scan.sweeps[0].fields);
    checkLength(path, product, layout, scan);
    scan.oddities.push_back(
        "The words of a polar data file have the byte order of the machine "
        "that wrote it.");
    return scan;
}

}  // namespace scan

/* Recognises the format and calls its reader. */
#include "scan/formats/read_scan.h"

#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/fields/oddities.h"
#include "scan/formats/compressed/unpacked_file.h"
#include "scan/formats/containers/containers.h"
#include "scan/formats/dx/read_dx.h"
#include "scan/formats/nexrad/read_nexrad.h"
#include "scan/formats/polar/read_polar.h"
#include "scan/formats/record/read_record.h"
#include "scan/formats/uf/read_uf.h"
#include "scan/scan.h"

namespace scan {
namespace {

Scan readAs(FileFormat format, const std::string& path, std::unique_ptr<Cufrw>& words,
            const ReadOptions& options) {
    switch (format) {
        case FileFormat::kUniversalFormat:
            return readUniversalFormat(path, words);
        case FileFormat::kFieldRecord:
            return readFieldRecord(path);
        case FileFormat::kPolarData:
            return readPolarData(path, options.polarLayout);
        case FileFormat::kGermanDx:
            return readGermanDx(path, options.keepNoEcho);
        case FileFormat::kHdf5:
            return containers().readHdf5(path);
        case FileFormat::kNexrad:
            return readNexrad(path);
        case FileFormat::kNetcdf:
            return containers().readNetcdf(path);
        case FileFormat::kForeign:
            throw std::runtime_error("is " + foreignFormat(path) + kConvert);
        case FileFormat::kCompressed:
        case FileFormat::kUnknown:
            break;
    }
    throw std::runtime_error(
        "is of no known format: Universal Format, field records, polar data, German DX, ODIM_H5, "
        "CfRadial and NEXRAD Level 2 are read");
}

void hideValue(float noEcho, float* values, std::uint8_t* gates, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const bool silent = values[i] == noEcho;
        gates[i] = silent;
        values[i] = silent ? kNoValue : values[i];
    }
}

/* Formats that always leave the value in place are those of the library itself. */
bool marksNoEcho(FileFormat format) {
    return format == FileFormat::kHdf5 || format == FileFormat::kNetcdf ||
           format == FileFormat::kNexrad;
}

/* Also what is in a compressed file, once. */
Scan readUnpacked(const std::string& path, std::unique_ptr<Cufrw>& words,
                  const ReadOptions& options) {
    const FileFormat format = recognise(path);
    if (format == FileFormat::kCompressed) {
        const UnpackedFile unpacked(path);
        if (recognise(unpacked.path()) == FileFormat::kCompressed) {
            throw std::runtime_error("is compressed twice");
        }
        return readUnpacked(unpacked.path(), words, options);
    }
    Scan scan = readAs(format, path, words, options);
    if (marksNoEcho(format) && !options.keepNoEcho) {
        hideNoEcho(scan);
    }
    return scan;
}

}  // namespace

void hideNoEcho(Scan& scan) {
    for (Sweep& sweep : scan.sweeps) {
        for (Field& field : sweep.fields) {
            if (!field.noEcho) {
                continue;
            }
            field.noEchoGates.resize(field.values.size());
            hideValue(*field.noEcho, field.values.data(), field.noEchoGates.data(),
                      field.values.size());
        }
    }
}

Scan readScan(const std::string& path, std::unique_ptr<Cufrw>& words, const ReadOptions& options) {
    words.reset();
    Scan scan = readUnpacked(path, words, options);
    scan.path = scan.opened = path;
    if (options.oddities) {
        addOddities(scan);
    }
    return scan;
}

Scan readScan(const std::string& path, const ReadOptions& options) {
    std::unique_ptr<Cufrw> words;
    return readScan(path, words, options);
}

}  // namespace scan

#include "scan/formats/read_scan.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/fields/oddities.h"
#include "scan/formats/containers/containers.h"
#include "scan/formats/dx/read_dx.h"
#include "scan/formats/nexrad/read_nexrad.h"
#include "scan/formats/polar/read_polar.h"
#include "scan/formats/record/read_record.h"
#include "scan/formats/uf/read_uf.h"

namespace scan {
namespace {

constexpr char kRecordIdentification[] = "PLUVEK V1.3";

bool startsWith(const char* head, const char* text) {
    return std::memcmp(head, text, std::strlen(text)) == 0;
}

/* "DX" and the first digits of a date. */
bool isGermanDx(const char* head) {
    return startsWith(head, "DX") && std::strspn(head + 2, " 0123456789") >= 6;
}

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
        case FileFormat::kUnknown:
            break;
    }
    throw std::runtime_error(
        "is of no known format: Universal Format, field records, polar data, German DX, ODIM_H5, "
        "CfRadial and NEXRAD Level 2 are read");
}

/* Gates without an echo have no value: their place is kept. Formats that always leave the value in
 * place are those of the library itself. */
void hideNoEcho(Scan& scan) {
    for (Sweep& sweep : scan.sweeps) {
        for (Field& field : sweep.fields) {
            if (!field.noEcho) continue;
            field.noEchoGates.resize(field.values.size());
            for (std::size_t i = 0; i < field.values.size(); ++i) {
                field.noEchoGates[i] = field.values[i] == *field.noEcho;
                if (field.noEchoGates[i]) {
                    field.values[i] = std::numeric_limits<float>::quiet_NaN();
                }
            }
        }
    }
}

bool marksNoEcho(FileFormat format) {
    return format == FileFormat::kHdf5 || format == FileFormat::kNetcdf ||
           format == FileFormat::kNexrad;
}

}  // namespace

FileFormat recognise(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) throw std::runtime_error("is a directory");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(errno ? std::strerror(errno) : "cannot be opened");
    char head[sizeof kRecordIdentification] = {};
    file.read(head, sizeof head - 1);
    if (file.gcount() == 0) throw std::runtime_error("is empty");
    if (startsWith(head, kRecordIdentification)) return FileFormat::kFieldRecord;
    if (startsWith(head, "RADF") || startsWith(head, "ARFD")) return FileFormat::kPolarData;
    if (startsWith(head, "AR2V") || startsWith(head, "ARCHIVE2")) return FileFormat::kNexrad;
    if (startsWith(head, "\x89HDF\r\n")) return FileFormat::kHdf5;
    if (startsWith(head, "CDF\x01") || startsWith(head, "CDF\x02") || startsWith(head, "CDF\x05")) {
        return FileFormat::kNetcdf;
    }
    if (isGermanDx(head)) return FileFormat::kGermanDx;
    if (file.gcount() >= 6 && head[4] == 'U' && head[5] == 'F') return FileFormat::kUniversalFormat;
    return FileFormat::kUnknown;
}

Scan readScan(const std::string& path, std::unique_ptr<Cufrw>& words, const ReadOptions& options) {
    words.reset();
    const FileFormat format = recognise(path);
    Scan scan = readAs(format, path, words, options);
    if (marksNoEcho(format) && !options.keepNoEcho) {
        hideNoEcho(scan);
    }
    scan.path = path;
    if (options.oddities) addOddities(scan);
    return scan;
}

Scan readScan(const std::string& path, const ReadOptions& options) {
    std::unique_ptr<Cufrw> words;
    return readScan(path, words, options);
}

}  // namespace scan

#include "scan/formats/read_scan.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/fields/oddities.h"
#include "scan/formats/dx/read_dx.h"
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
        case FileFormat::kUnknown:
            break;
    }
    throw std::runtime_error(
        "neither a Universal Format, field record, polar data nor German DX file");
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
    if (isGermanDx(head)) return FileFormat::kGermanDx;
    if (file.gcount() >= 6 && head[4] == 'U' && head[5] == 'F') return FileFormat::kUniversalFormat;
    return FileFormat::kUnknown;
}

Scan readScan(const std::string& path, std::unique_ptr<Cufrw>& words, const ReadOptions& options) {
    words.reset();
    Scan scan = readAs(recognise(path), path, words, options);
    scan.path = path;
    if (options.oddities) addOddities(scan);
    return scan;
}

Scan readScan(const std::string& path, const ReadOptions& options) {
    std::unique_ptr<Cufrw> words;
    return readScan(path, words, options);
}

}  // namespace scan

#include "read_scan.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "oddities.h"
#include "read_record.h"
#include "read_uf.h"

namespace cli {
namespace {

constexpr char kRecordIdentification[] = "PLUVEK V1.3";

}  // namespace

FileFormat recognise(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) throw std::runtime_error("is a directory");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(errno ? std::strerror(errno) : "cannot be opened");
    char head[sizeof kRecordIdentification - 1] = {};
    file.read(head, sizeof head);
    if (file.gcount() == 0) throw std::runtime_error("is empty");
    if (std::memcmp(head, kRecordIdentification, sizeof head) == 0) return FileFormat::kFieldRecord;
    if (file.gcount() >= 6 && head[4] == 'U' && head[5] == 'F') return FileFormat::kUniversalFormat;
    return FileFormat::kUnknown;
}

Scan readScan(const std::string& path, std::unique_ptr<Cufrw>& words) {
    words.reset();
    const FileFormat format = recognise(path);
    if (format == FileFormat::kUnknown)
        throw std::runtime_error("neither a Universal Format nor a field record file");
    Scan scan = format == FileFormat::kUniversalFormat ? readUniversalFormat(path, words)
                                                       : readFieldRecord(path);
    scan.path = path;
    addOddities(scan);
    return scan;
}

Scan readScan(const std::string& path) {
    std::unique_ptr<Cufrw> words;
    return readScan(path, words);
}

}  // namespace cli

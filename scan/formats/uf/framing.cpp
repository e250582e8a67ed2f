/* framing.cpp - walks over the lengths of the records. */
#include "scan/formats/uf/framing.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "scan/formats/reading/big_endian.h"
#include "scan/opened_file.h"

namespace scan {
namespace {

struct Framing {
    int year = 0;                  // as it is in the file
    std::uintmax_t bytesLeft = 0;  // after the last whole record
    bool lacksLastLength = false;  // which the last record is read without
};

Framing readFraming(const std::string& path) {
    constexpr std::size_t kYearOffset = 4 + 2 * 25;
    constexpr std::uint32_t kSmallestRecordBytes = 114;
    Framing framing;
    framing.bytesLeft = std::filesystem::file_size(path);
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);  // a buffer would be filled anew for each record
    file.open(path, std::ios::binary);
    if (!file) {
        failReading(path, "cannot be opened");
    }
    std::uint8_t head[kYearOffset + 2];
    if (file.read(reinterpret_cast<char*>(head), sizeof head)) {
        framing.year = BigEndian(head, sizeof head).u16(kYearOffset);
    }
    std::uintmax_t begin = 0;
    while (file.seekg(static_cast<std::streamoff>(begin)),
           file.read(reinterpret_cast<char*>(head), 4)) {
        const std::uint32_t length = BigEndian(head, 4).u32(0);
        if (length < kSmallestRecordBytes || length + 4ULL > framing.bytesLeft) {
            break;
        }
        framing.lacksLastLength = length + 8ULL > framing.bytesLeft;
        const std::uintmax_t held = std::min<std::uintmax_t>(length + 8ULL, framing.bytesLeft);
        begin += held;
        framing.bytesLeft -= held;
    }
    return framing;
}

}  // namespace

void addFramingNotes(const std::string& path, Scan& scan) {
    const Framing framing = readFraming(path);
    if (framing.year < 100) {
        scan.oddities.push_back("The year has two digits: " + std::to_string(framing.year) +
                                ", read as " + std::to_string(scan.time.year) + ".");
    }
    if (framing.bytesLeft > 0) {
        scan.damage.push_back(std::to_string(framing.bytesLeft) +
                              " bytes after the last whole record were left unread: the file is "
                              "cut short, or something was appended.");
    }
    if (framing.lacksLastLength) {
        scan.damage.push_back("The file ends within the last record's closing length.");
    }
}

}  // namespace scan

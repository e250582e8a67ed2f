/*
 * nexrad_records.h - the bytes of the messages in a NEXRAD Level 2 file, whether its records are
 * compressed or not.
 */
#ifndef SCAN_FORMATS_NEXRAD_NEXRAD_RECORDS_H
#define SCAN_FORMATS_NEXRAD_NEXRAD_RECORDS_H

#include <cstdint>
#include <string>
#include <vector>

namespace scan::nexrad {

using Block = std::vector<std::uint8_t>;

constexpr std::size_t kVolumeHeaderBytes = 24;

struct Records {
    Block header;                     // the 24 bytes that begin a volume
    std::vector<Block> blocks;        // messages never cross from one to the next
    std::vector<std::string> damage;  // sentences
    std::vector<std::string> oddities;
};

/* Throws std::runtime_error when the file cannot be read or begins as no volume does. */
Records readRecords(const std::string& path);

}  // namespace scan::nexrad

#endif

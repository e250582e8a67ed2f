/*
 * Records of a volume. After the volume header follow records of a length (four bytes, negative for
 * the last one) and as many bytes compressed with bzip2; older files have the messages themselves.
 * Records do not depend on each other: they are decompressed side by side.
 */
#include "scan/formats/nexrad/nexrad_records.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "scan/formats/compressed/decompress.h"
#include "scan/formats/reading/big_endian.h"
#include "scan/formats/reading/nameless_file.h"

namespace scan::nexrad {
namespace {

constexpr unsigned kMaxThreads = 8;
/* Real records unpack to 1.5 MB or less. */
constexpr std::size_t kMaxRecordBytes = 16 << 20;

bool beginsVolume(const BigEndian& bytes) {
    return bytes.holds(0, kVolumeHeaderBytes) && (std::memcmp(bytes.bytes(), "AR2V", 4) == 0 ||
                                                  std::memcmp(bytes.bytes(), "ARCHIVE2", 8) == 0);
}

bool isCompressed(const BigEndian& bytes) {
    return bytes.holds(0, 8) && std::memcmp(bytes.bytes() + 4, "BZh", 3) == 0;
}

/* The compressed records, and whether the file ends within one. */
std::vector<BigEndian> splitRecords(BigEndian rest, Records& out) {
    std::vector<BigEndian> packed;
    while (rest.size() > 4) {
        if (beginsVolume(rest)) {
            out.oddities.push_back("The file holds more than one volume; the first is read.");
            break;
        }
        const std::size_t length = static_cast<std::size_t>(
            std::abs(static_cast<long>(static_cast<std::int32_t>(rest.u32(0)))));
        if (length == 0) {
            break;
        }
        if (!rest.holds(4, length)) {
            out.damage.push_back("The file ends within a record.");
        }
        packed.push_back(rest.part(4, length));
        rest = rest.part(4 + std::min(length, rest.size() - 4));
    }
    return packed;
}

/* What a record holds; as far as it is whole. */
std::vector<Block> unpackAll(const std::vector<BigEndian>& packed, std::vector<char>& whole) {
    std::vector<Block> blocks(packed.size());
    whole.assign(packed.size(), 0);
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t i = next++; i < packed.size(); i = next++) {
            whole[i] = unpackBzip2(packed[i].bytes(), packed[i].size(), kMaxRecordBytes, blocks[i]);
        }
    };
    std::vector<std::thread> threads;
    const unsigned count = std::clamp(std::thread::hardware_concurrency(), 1U, kMaxThreads);
    for (unsigned i = 1; i < std::min<std::size_t>(count, packed.size()); ++i) {
        threads.emplace_back(work);
    }
    work();
    for (std::thread& thread : threads) {
        thread.join();
    }
    return blocks;
}

}  // namespace

Records readRecords(const std::string& path) {
    const Block file = bytesOf(path);
    const BigEndian bytes(file.data(), file.size());
    if (!beginsVolume(bytes)) {
        throw std::runtime_error("is not a whole NEXRAD Level 2 file");
    }
    Records records;
    records.header.assign(file.begin(), file.begin() + kVolumeHeaderBytes);
    const BigEndian rest = bytes.part(kVolumeHeaderBytes);
    if (!isCompressed(rest)) {
        records.blocks.emplace_back(rest.bytes(), rest.bytes() + rest.size());
        return records;
    }
    requireBzip2();
    std::vector<char> whole;
    records.blocks = unpackAll(splitRecords(rest, records), whole);
    const auto damaged = std::count(whole.begin(), whole.end(), 0);
    if (damaged > 0) {
        records.damage.push_back(std::to_string(damaged) + " of " + std::to_string(whole.size()) +
                                 " records are damaged.");
    }
    return records;
}

}  // namespace scan::nexrad

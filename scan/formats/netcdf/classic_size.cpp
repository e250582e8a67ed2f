/*
 * The header of the classic model (CDF-1, CDF-2, CDF-5): number of records, then three lists, of
 * dimensions, attributes and variables. A variable has the bytes that it takes and where it begins.
 * Counts take four bytes, in CDF-5 eight; beginnings take eight from CDF-2 on.
 */
#include "scan/formats/netcdf/classic_size.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "scan/formats/reading/big_endian.h"
#include "scan/opened_file.h"

namespace scan::netcdf {
namespace {

constexpr std::size_t kMaxHeaderBytes = 4 << 20;
constexpr std::uint64_t kPadding = 3;  // the last variable may lack it
constexpr std::uint32_t kStreaming = 0xFFFFFFFF;

class Header {
  public:
    Header(const std::vector<std::uint8_t>& bytes, std::uint64_t fileBytes)
        : bytes_(bytes.data(), bytes.size()), fileBytes_(fileBytes), version_(bytes_.u8(3)) {}

    /* Also if the header declares more than it holds, which the library would ask memory for. */
    bool exceedsFile() {
        const bool streaming = bytes_.u32(at_) == kStreaming;
        records_ = streaming ? 0 : count();
        if (streaming) {
            at_ += version_ == 5 ? 8 : 4;
        }
        for (std::uint64_t left = listLength(); left > 0 && !bytes_.failed(); --left) {
            skipName();
            isRecord_.push_back(count() == 0);
        }
        skipAttributes();
        for (std::uint64_t left = listLength(); left > 0 && !bytes_.failed(); --left) {
            readVariable();
        }
        const std::uint64_t last = records_ > 0 ? (records_ - 1) * recordBytes_ : 0;
        const std::uint64_t end = std::max(fixedEnd_, records_ > 0 ? recordEnd_ + last : 0);
        return bytes_.failed() || end > fileBytes_ + kPadding;
    }

  private:
    std::uint64_t number(std::size_t width) {
        std::uint64_t value = bytes_.u32(at_);
        if (width == 8) {
            value = value << 32 | bytes_.u32(at_ + 4);
        }
        at_ += width;
        return value;
    }
    std::uint64_t count() { return number(version_ == 5 ? 8 : 4); }
    std::uint64_t listLength() {
        number(4);  // which list it is
        return count();
    }
    void skip(std::uint64_t bytes) {
        at_ +=
            static_cast<std::size_t>(std::min<std::uint64_t>((bytes + 3) / 4 * 4, kMaxHeaderBytes));
    }
    void skipName() { skip(count()); }
    void skipAttributes() {
        constexpr std::uint64_t kTypeBytes[] = {0, 1, 1, 2, 4, 4, 8, 1, 2, 4, 8, 8};
        for (std::uint64_t left = listLength(); left > 0 && !bytes_.failed(); --left) {
            skipName();
            const std::uint64_t type = number(4);
            const std::uint64_t values = std::min<std::uint64_t>(count(), kMaxHeaderBytes);
            skip(type < std::size(kTypeBytes) ? values * kTypeBytes[type] : kMaxHeaderBytes);
        }
    }
    void readVariable() {
        skipName();
        bool record = false;
        const std::uint64_t dimensions = count();
        for (std::uint64_t d = 0; d < dimensions && !bytes_.failed(); ++d) {
            const std::uint64_t id = count();
            record |= d == 0 && id < isRecord_.size() && isRecord_[id];
        }
        skipAttributes();
        number(4);  // its type
        const std::uint64_t size = count();
        const std::uint64_t end = number(version_ == 1 ? 4 : 8) + size;
        if (record) {
            recordBytes_ += size;
            recordEnd_ = std::max(recordEnd_, end);
        } else {
            fixedEnd_ = std::max(fixedEnd_, end);
        }
    }

    BigEndian bytes_;
    std::uint64_t fileBytes_;
    int version_;
    std::size_t at_ = 4;
    std::uint64_t records_ = 0, recordBytes_ = 0, fixedEnd_ = 0, recordEnd_ = 0;
    std::vector<char> isRecord_;  // of each dimension
};

}  // namespace

bool isCutShort(const std::string& path) {
    const std::uint64_t fileBytes = std::filesystem::file_size(path);
    std::vector<std::uint8_t> head(std::min<std::uint64_t>(fileBytes, kMaxHeaderBytes));
    std::ifstream file = openToRead(path);
    file.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(head.size()));
    const bool classic = file && head.size() > 4 && head[0] == 'C' && head[1] == 'D';
    return classic && Header(head, fileBytes).exceedsFile();
}

}  // namespace scan::netcdf

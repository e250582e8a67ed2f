/*
 * Field record files (docs/formats/field-record.md): whole arrays of records. The records of an
 * array share the grid of the first one: its sizes are those of every block.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "base/array.h"
#include "base/files/byte_cursor.h"
#include "base/files/claims.h"
#include "base/files/file.h"
#include "base/message.h"
#include "clutterclassifier/Cpluvek.h"
#include "model/field_record_layout.h"

using clutter::base::ByteCursor;
using clutter::base::Bytes;
using clutter::base::bytesFrom;
using namespace clutter::model;

namespace {

using OwnedFloats = std::unique_ptr<float[]>;

/* Rays and gates of a block or of a whole array of records. Products never overflow 64 bits. */
struct Grid {
    int ngates;
    int nrays;

    bool negative() const { return ngates < 0 || nrays < 0; }
    std::size_t angleCount() const { return static_cast<std::size_t>(std::max(nrays, 0)) + 1; }
    std::size_t valueCount() const { return clutter::base::cellCount(ngates, nrays); }
};

/* --- values as they are stored --- */

/* Rounds to the nearest step and wraps to the storage width: the producer chooses scale and offset
 * to fit. NaN and values past 64 bits give 0. */
template <class Raw>
Raw encode(float value, double scale, double offset) {
    constexpr double kTwoTo63 = 9223372036854775808.0;
    const double raw = std::floor((static_cast<double>(value) - offset) / scale + 0.5);
    if (!(raw >= -kTwoTo63 && raw < kTwoTo63)) {
        return 0;
    }
    return static_cast<Raw>(static_cast<std::int64_t>(raw));
}

template <class Raw>
void encodeAll(std::span<const float> values, const Cpluvek& record, unsigned char* out) {
    for (const float value : values) {
        const Raw raw = encode<Raw>(value, record.scale, record.offset);
        std::memcpy(out, &raw, sizeof raw);
        out += sizeof raw;
    }
}

void storeValues(std::span<const float> values, const Cpluvek& record, unsigned char* out) {
    if (record.datatype == kUint8) {
        return encodeAll<std::uint8_t>(values, record, out);
    }
    if (record.datatype == kUint16) {
        return encodeAll<std::uint16_t>(values, record, out);
    }
    if (!values.empty()) {
        std::memcpy(out, values.data(), values.size_bytes());
    }
}

template <class Raw>
void decodeAll(Bytes stored, const Cpluvek& record, float* out) {
    for (ByteCursor cursor(stored); cursor.remaining() > 0;) {
        *out++ = static_cast<float>(cursor.native<Raw>() * record.scale + record.offset);
    }
}

void loadFloats(Bytes stored, float* out) {
    if (!stored.empty()) {
        std::memcpy(out, stored.data(), stored.size());
    }
}

void loadValues(Bytes stored, const Cpluvek& record, float* out) {
    if (record.datatype == kUint8) {
        return decodeAll<std::uint8_t>(stored, record, out);
    }
    if (record.datatype == kUint16) {
        return decodeAll<std::uint16_t>(stored, record, out);
    }
    loadFloats(stored, out);
}

/* --- writing --- */

struct HeaderWriter {
    unsigned char* header;

    template <class T>
    void number(std::size_t offset, const T& value) {
        std::memcpy(header + offset, &value, sizeof value);
    }
    void text(std::size_t offset, const char* buffer, std::size_t width) {
        std::copy_n(buffer, width, header + offset);  // with the bytes after the terminator
    }
};

/* The values of an array for a block. Where the array is shorter, the block keeps zeros. */
std::span<const float> upTo(std::size_t wanted, const float* values, std::size_t held) {
    return {values, values == nullptr ? 0 : std::min(wanted, held)};
}

unsigned char* storeCounts(int first, int second, unsigned char* out) {
    const int counts[2] = {first, second};
    std::memcpy(out, counts, sizeof counts);
    return out + sizeof counts;
}

std::vector<unsigned char> buildBlock(const Cpluvek& record, const Grid& grid) {
    const Grid own{record.ngates, record.nrays};
    const std::size_t angleBytes = grid.angleCount() * sizeof(float);
    const std::size_t valueBytes = grid.valueCount() * storedValueBytes(record.datatype);
    std::vector<unsigned char> block(kMinBlockBytes + angleBytes + valueBytes);
    unsigned char* out = block.data();
    std::memcpy(out, kIdentification, sizeof kIdentification);
    visitHeader(record, HeaderWriter{out});
    out = storeCounts(static_cast<int>(static_cast<unsigned>(grid.nrays) + 1u), 1,
                      out + kHeaderBytes);
    const auto angles = upTo(grid.angleCount(), record.angles, own.angleCount());
    std::copy_n(std::as_bytes(angles).data(), angles.size_bytes(),
                reinterpret_cast<std::byte*>(out));
    out = storeCounts(grid.ngates, grid.nrays, out + angleBytes);
    storeValues(upTo(grid.valueCount(), record.data, own.valueCount()), record, out);
    return block;
}

/* --- reading --- */

struct HeaderReader {
    Bytes header;

    template <class T>
    void number(std::size_t offset, T& value) {
        std::memcpy(&value, header.data() + offset, sizeof value);
    }
    /* The bytes of a buffer past the text's width in the file stay, except for a terminator. */
    template <std::size_t N>
    void text(std::size_t offset, char (&buffer)[N], std::size_t width) {
        std::memcpy(buffer, header.data() + offset, width);
        if (width < N && std::memchr(buffer, '\0', width) == nullptr) {
            buffer[width] = '\0';
        }
        buffer[N - 1] = '\0';
    }
};

int intAt(Bytes bytes, std::size_t offset) {
    return ByteCursor(bytesFrom(bytes, offset)).native<int>();
}

/* A block with checked counts: no part of it reaches past the end of the file. */
struct Block {
    Bytes header;
    Grid own;     // as in its header
    Grid shared;  // of the whole array, as held by its arrays
    Bytes angles;
    Bytes values;
};

enum class BlockCheck { kSound, kCutShort, kContradiction };

/* The blocks of a file, one after the other. */
struct BlockReader {
    ByteCursor cursor;
    std::size_t fileBytes;
    bool atFirstBlock = true;
    Grid firstGrid{};                // of the first block, shared by all later ones
    std::size_t declaredValues = 0;  // by headers, past the shared grid

    explicit BlockReader(Bytes file) : cursor(file), fileBytes(file.size()) {}

    /* Whether a block's header may declare its own grid. The file holds the shared part of it. */
    bool mayDeclare(const Block& block) {
        const auto beyond = [](std::size_t own, std::size_t shared) {
            return std::max(own, shared) - shared;
        };
        declaredValues += beyond(block.own.angleCount(), block.shared.angleCount());
        declaredValues += beyond(block.own.valueCount(), block.shared.valueCount());
        return clutter::base::mayDeclare(declaredValues, fileBytes);
    }
};

/* Whether a grid can be in the remaining bytes. By division, so that no product overflows. */
bool fits(const Grid& grid, std::size_t valueBytes, std::size_t remaining) {
    return grid.angleCount() <= remaining / sizeof(float) &&
           grid.valueCount() <= remaining / valueBytes;
}

BlockCheck checkCounts(ByteCursor& cursor, std::size_t expected) {
    const std::int64_t first = cursor.native<int>();
    const std::int64_t second = cursor.native<int>();
    if (cursor.failed()) {
        return BlockCheck::kCutShort;
    }
    const bool agrees = first * second == static_cast<std::int64_t>(expected);
    return agrees ? BlockCheck::kSound : BlockCheck::kContradiction;
}

BlockCheck parseBlock(BlockReader& reader, Block& block) {
    ByteCursor& cursor = reader.cursor;
    block.header = cursor.skip(kHeaderBytes);
    if (cursor.failed()) {
        return BlockCheck::kCutShort;
    }
    block.own = {intAt(block.header, kGatesOffset), intAt(block.header, kRaysOffset)};
    block.shared = reader.atFirstBlock ? block.own : reader.firstGrid;
    if (block.own.negative()) {
        return BlockCheck::kContradiction;
    }
    const std::size_t valueBytes = storedValueBytes(intAt(block.header, kDatatypeOffset));
    if (reader.atFirstBlock && !fits(block.own, valueBytes, cursor.remaining())) {
        return BlockCheck::kCutShort;
    }
    if (!reader.mayDeclare(block)) {
        return BlockCheck::kCutShort;
    }

    const BlockCheck angleCounts = checkCounts(cursor, block.shared.angleCount());
    if (angleCounts != BlockCheck::kSound) {
        return angleCounts;
    }
    block.angles = cursor.skipArray(block.shared.angleCount(), sizeof(float));
    const BlockCheck valueCounts = checkCounts(cursor, block.shared.valueCount());
    if (valueCounts != BlockCheck::kSound) {
        return valueCounts;
    }
    block.values = cursor.skipArray(block.shared.valueCount(), valueBytes);
    return cursor.failed() ? BlockCheck::kCutShort : BlockCheck::kSound;
}

OwnedFloats zeros(std::size_t atLeast, std::size_t orElse) {
    return std::make_unique<float[]>(std::max(atLeast, orElse));
}

/* Fills a record. Where its own header declares more than the shared grid, zeros follow, so that
 * its sizes never exceed its arrays. */
void unpackBlock(const Block& block, Cpluvek& record) {
    auto angles = zeros(block.shared.angleCount(), block.own.angleCount());
    auto values = zeros(block.shared.valueCount(), block.own.valueCount());
    visitHeader(record, HeaderReader{block.header});
    loadFloats(block.angles, angles.get());
    loadValues(block.values, record, values.get());
    clutter::base::adopt(record.angles, std::move(angles));
    clutter::base::adopt(record.data, std::move(values));
    std::copy_n(record.axislimits, 6, record.axislimits0);
    record.valid = 1;
}

/* The number of blocks that a file declares; 0 for other files and for files too short for it. */
int declaredBlocks(Bytes file) {
    if (file.size() < kMinBlockBytes) {
        return 0;
    }
    if (std::memcmp(file.data(), kIdentification, sizeof kIdentification) != 0) {
        return 0;
    }
    const int declared = intAt(file, kRecordsOffset);
    const std::size_t possible = file.size() / kMinBlockBytes;
    return declared > 0 && static_cast<std::size_t>(declared) <= possible ? declared : 0;
}

}  // namespace

int Cpluvek::WriteDataToFile(const char* file) {
    if (this == nullptr) {
        return 0;
    }
    clutter::base::File stream = clutter::base::openFile(file, "wb");
    if (!stream) {
        return 0;
    }
    const Grid grid{ngates, nrays};
    for (int i = 0; i < nrecords; ++i) {
        const auto block = buildBlock(this[i], grid);
        if (std::fwrite(block.data(), 1, block.size(), stream.get()) != block.size()) {
            return 0;
        }
    }
    return clutter::base::closeChecked(std::move(stream)) ? 1 : 0;
}

int Cpluvek::ReadDataFromFile(const char* file) {
    if (this == nullptr) {
        return 0;
    }
    const auto bytes = clutter::base::readWholeFile(file);
    const int blocks = bytes ? declaredBlocks(*bytes) : 0;
    if (blocks == 0) {
        return 0;
    }
    BlockReader reader(*bytes);
    for (int i = 0; i < blocks; ++i) {
        Block block;
        const BlockCheck check = parseBlock(reader, block);
        if (check == BlockCheck::kContradiction) {
            clutter::base::report("Error in Cpluvek!\n");
        }
        if (check != BlockCheck::kSound) {
            return 0;
        }
        unpackBlock(block, this[i]);
        reader.firstGrid = block.shared;
        reader.atFirstBlock = false;
    }
    return 1;
}

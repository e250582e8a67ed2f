/*
 * Universal Format files (docs/formats/universal-format.md): bytes to rays and back.
 */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "base/array.h"
#include "base/files/byte_cursor.h"
#include "base/files/file.h"
#include "base/message.h"
#include "clutterclassifier/Cufrw.h"
#include "formats/uf/layout.h"

using clutter::base::ByteCursor;
using clutter::base::Bytes;
using clutter::base::bytesFrom;
using namespace clutter::formats;

namespace {

constexpr const char* kTooManyFields =
    "The number of fields is larger than 20!. Please increase the array sizes.";

/* Years below this one are counted from 2000; other two-digit years do not change. */
constexpr short kTwoDigitYearLimit = 20;

/* Offset in bytes of a position, which is not 0. */
std::size_t byteOffset(std::size_t position) {
    return kWordBytes * (position - 1);
}

std::string_view fieldName(const CufTableEntry& entry) {
    return {entry.name, strnlen(entry.name, sizeof entry.name - 1)};
}

/* --- reading --- */

/* Visitor that fills the members of a header. Words past the end of the record are 0. */
class WordReader {
  public:
    explicit WordReader(Bytes from) : cursor_(from) {}

    template <class Word>
    void word(Word& value) {
        value = static_cast<Word>(cursor_.big16());
    }
    template <std::size_t N>
    void text(char (&buffer)[N]) {
        cursor_.text(buffer, N - 1);
    }

  private:
    ByteCursor cursor_;
};

Bytes fromPosition(Bytes record, std::size_t position) {
    return position == 0 ? Bytes{} : bytesFrom(record, byteOffset(position));
}

/* The complete records of a file. The length after the last one may be missing. */
std::vector<Bytes> splitRecords(Bytes file) {
    std::vector<Bytes> records;
    ByteCursor cursor(file);
    while (cursor.remaining() > 0) {
        const Bytes record = cursor.skip(cursor.big32());
        if (record.size() < kMinRecordBytes) {
            break;
        }
        records.push_back(record);
        cursor.skip(kFramingBytes);
    }
    return records;
}

bool startsWithUf(Bytes record) {
    return record[0] == 'U' && record[1] == 'F';
}

void completeYear(short& year) {
    if (year < kTwoDigitYearLimit) {
        year = static_cast<short>(year + 2000);
    }
}

/* The headers of a ray. The data header directly follows the others, whatever its position word
 * says. */
void readHeaders(WordReader& reader, Cufray& ray) {
    visitMandatoryHeader(ray, reader);
    completeYear(ray.year);
    completeYear(ray.generationyear);
    if (ray.localposition == kLocalPositionWithOptional) {
        visitOptionalHeader(ray, reader);
    }
    visitDataHeader(ray, reader);
}

/* The words of one field. Words past the end of the record are missing data. */
void readData(Bytes stored, short missing, short* out, std::size_t ngates) {
    ByteCursor cursor(stored);
    const std::size_t held = std::min(ngates, stored.size() / kWordBytes);
    for (std::size_t g = 0; g < held; ++g) {
        out[g] = static_cast<short>(cursor.big16());
    }
    std::fill(out + held, out + ngates, missing);
}

/* Field headers and data. False when the ray has more gates than its record has words. */
[[nodiscard]] bool readFields(Bytes record, std::size_t fields, Cufray& ray) {
    for (std::size_t f = 0; f < fields; ++f) {
        CufFieldHeader& header = ray.headers[f];
        WordReader reader(fromPosition(record, ray.table[f].position));
        visitFieldHeader(header, reader);
        visitFieldWords(ray, fieldName(ray.table[f]), reader);
        if (f == 0) {
            if (header.ngates > record.size() / kWordBytes) {
                return false;
            }
            ray.ngates = header.ngates;
            ray.data = new short[fields * ray.ngates];
        }
        readData(fromPosition(record, header.dataposition), ray.missingvalue,
                 ray.data + f * ray.ngates, ray.ngates);
    }
    return true;
}

/* --- writing --- */

/* Visitor that writes the members of a header, starting at a position. Unwritten bytes are 0. The
 * record ends after its last written word. */
class WordWriter {
  public:
    void seek(std::size_t position) { at_ = byteOffset(position); }

    void word(int value) {
        unsigned char* out = reserve(2);
        out[0] = static_cast<unsigned char>(value >> 8);
        out[1] = static_cast<unsigned char>(value);
    }
    template <std::size_t N>
    void text(const char (&buffer)[N]) {
        std::copy_n(buffer, N - 1, reserve(N - 1));
    }
    void words(const short* values, std::size_t n) {
        unsigned char* out = reserve(2 * n);
        for (std::size_t i = 0; i < n; ++i) {
            out[2 * i] = static_cast<unsigned char>(values[i] >> 8);
            out[2 * i + 1] = static_cast<unsigned char>(values[i]);
        }
    }
    const std::vector<unsigned char>& record() const { return record_; }

  private:
    unsigned char* reserve(std::size_t n) {
        record_.resize(std::max(record_.size(), at_ + n));
        at_ += n;
        return record_.data() + at_ - n;
    }

    std::vector<unsigned char> record_;
    std::size_t at_ = 0;
};

/* A field without positions is not written. */
bool hasPositions(const Cufray& ray, std::size_t f) {
    return ray.table[f].position != 0 && ray.headers[f].dataposition != 0;
}

/*
 * Sets the positions of the headers. In a ray read from a record without an optional header, fields
 * occupy the words of this header and the table: they all move back by the same distance.
 */
void placeHeaders(Cufray& ray, std::size_t fields) {
    ray.optionalposition = kOptionalPosition;
    ray.localposition = kLocalPositionWithOptional;
    ray.dataposition = kDataHeaderPosition;
    std::size_t first = SIZE_MAX, last = 0;
    for (std::size_t f = 0; f < fields; ++f) {
        if (!hasPositions(ray, f)) {
            continue;
        }
        const auto ends = std::minmax(ray.table[f].position, ray.headers[f].dataposition);
        first = std::min<std::size_t>(first, ends.first);
        last = std::max<std::size_t>(last, ends.second);
    }
    if (first >= firstFreePosition(fields)) {
        return;
    }
    const std::size_t distance = firstFreePosition(fields) - first;
    if (last + distance > UINT16_MAX) {
        return;
    }
    for (std::size_t f = 0; f < fields; ++f) {
        if (!hasPositions(ray, f)) {
            continue;
        }
        ray.table[f].position = static_cast<unsigned short>(ray.table[f].position + distance);
        ray.headers[f].dataposition =
            static_cast<unsigned short>(ray.headers[f].dataposition + distance);
    }
}

/*
 * Writes fields in three passes. Some makers leave no room for the words after the header of a
 * velocity or power field: later passes overwrite them with headers and data.
 */
void writeFields(const Cufray& ray, std::size_t fields, WordWriter& writer) {
    for (std::size_t f = 0; f < fields; ++f) {
        if (!hasPositions(ray, f)) {
            continue;
        }
        writer.seek(ray.table[f].position + kFieldHeaderWords);
        visitFieldWords(ray, fieldName(ray.table[f]), writer);
    }
    for (std::size_t f = 0; f < fields; ++f) {
        if (!hasPositions(ray, f)) {
            continue;
        }
        writer.seek(ray.table[f].position);
        visitFieldHeader(ray.headers[f], writer);
    }
    for (std::size_t f = 0; f < fields && ray.data != nullptr; ++f) {
        if (!hasPositions(ray, f)) {
            continue;
        }
        writer.seek(ray.headers[f].dataposition);
        writer.words(ray.data + f * ray.ngates, ray.ngates);
    }
}

std::vector<unsigned char> buildRecord(Cufray& ray, std::size_t fields) {
    placeHeaders(ray, fields);
    WordWriter writer;
    visitMandatoryHeader(std::as_const(ray), writer);
    visitOptionalHeader(std::as_const(ray), writer);
    visitDataHeader(std::as_const(ray), writer);
    visitFieldTable(std::as_const(ray), fields, writer);
    writeFields(ray, fields, writer);
    ray.recordlength = static_cast<unsigned short>(writer.record().size() / kWordBytes);
    writer.seek(kLengthWord);
    writer.word(ray.recordlength);
    return writer.record();
}

void writeRecord(const std::vector<unsigned char>& record, std::FILE* stream) {
    const std::size_t n = record.size();
    const unsigned char length[kFramingBytes] = {
        static_cast<unsigned char>(n >> 24), static_cast<unsigned char>(n >> 16),
        static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n)};
    std::fwrite(length, 1, sizeof length, stream);
    std::fwrite(record.data(), 1, n, stream);
    std::fwrite(length, 1, sizeof length, stream);
}

template <class Value>
void reverseBytes(Value& value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    std::reverse(bytes, bytes + sizeof value);
    std::memcpy(&value, bytes, sizeof value);
}

}  // namespace

Cufrw::Cufrw() : rays(nullptr), nrays(0) {}

Cufrw::~Cufrw() {
    deletearrays();
}

void Cufrw::deletearrays() {
    for (int r = 0; rays != nullptr && r < nrays; ++r) {
        clutter::base::release(rays[r].data);
    }
    clutter::base::release(rays);
    nrays = 0;
}

int Cufrw::readfile(char* path) {
    deletearrays();
    const auto bytes = clutter::base::readWholeFile(path);
    if (!bytes) {
        return 0;
    }
    if (bytes->size() < kFramingBytes) {
        return 1;  // no record begins
    }
    const std::vector<Bytes> records = splitRecords(*bytes);
    if (records.empty() || !startsWithUf(records.front())) {
        return 0;
    }
    rays = new Cufray[records.size()]();
    nrays = static_cast<int>(records.size());
    for (std::size_t r = 0; r < records.size(); ++r) {
        WordReader reader(records[r]);
        readHeaders(reader, rays[r]);
        if (static_cast<std::uint16_t>(rays[0].nfields) > kMaxFields) {
            clutter::base::report("%s\n", kTooManyFields);
            return 0;
        }
        const std::size_t fields = fieldCount(rays[0]);
        visitFieldTable(rays[r], fields, reader);
        if (!readFields(records[r], fields, rays[r])) {
            return 0;
        }
    }
    return 1;
}

int Cufrw::write2file(char* path) {
    if (rays == nullptr || nrays < 1) {
        return 0;
    }
    clutter::base::File stream = clutter::base::openFile(path, "wb");
    if (!stream) {
        return 0;
    }
    const std::size_t fields = fieldCount(rays[0]);
    for (int r = 0; r < nrays; ++r) {
        writeRecord(buildRecord(rays[r], fields), stream.get());
    }
    return clutter::base::closeChecked(std::move(stream)) ? 0 : EOF;
}

void Cufrw::endian_swap(short* words, int n) {
    for (int i = 0; words != nullptr && i < n; ++i) {
        reverseBytes(words[i]);
    }
}

void Cufrw::endian_swap(unsigned short& word) {
    reverseBytes(word);
}

void Cufrw::endian_swap(short& word) {
    reverseBytes(word);
}

void Cufrw::endian_swap(unsigned int& value) {
    reverseBytes(value);
}

void Cufrw::endian_swap(int& value) {
    reverseBytes(value);
}

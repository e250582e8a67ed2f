/*
 * uf_bytes.h - small Universal Format files built word by word, with no help from the library.
 */
#ifndef CLUTTER_TESTS_FORMATS_UF_BYTES_H
#define CLUTTER_TESTS_FORMATS_UF_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace clutter::test {

/* A record whose words are addressed as the format counts them: from 1. */
class UfRecord {
  public:
    explicit UfRecord(std::size_t words = 57) : words_(words, 0) { text(1, "UF"); }

    UfRecord& set(std::size_t position, int value) {
        if (position > words_.size()) {
            words_.resize(position, 0);
        }
        words_[position - 1] = static_cast<std::uint16_t>(value);
        return *this;
    }
    UfRecord& text(std::size_t position, const std::string& letters) {
        for (std::size_t i = 0; i + 1 < letters.size(); i += 2) {
            set(position + i / 2,
                static_cast<unsigned char>(letters[i]) << 8 | (letters[i + 1] & 0xff));
        }
        return *this;
    }
    UfRecord& cut(std::size_t words) {
        words_.resize(words);
        return *this;
    }
    int at(std::size_t position) const { return words_.at(position - 1); }
    std::size_t size() const { return words_.size(); }

    /* The record between its two lengths. */
    ByteVector framed() const {
        ByteVector bytes;
        const auto length = [&] {
            const std::size_t n = 2 * words_.size();
            for (const int shift : {24, 16, 8, 0}) {
                bytes.push_back(n >> shift & 0xff);
            }
        };
        length();
        for (const std::uint16_t word : words_) {
            bytes.push_back(word >> 8);
            bytes.push_back(word & 0xff);
        }
        length();
        return bytes;
    }

  private:
    std::vector<std::uint16_t> words_;
};

struct UfField {
    std::string name;
    std::vector<int> words;
    int scale = 100;
};

constexpr int kUfMissing = -32768;

/* A sound ray with an optional header: field headers of 25 words, then the data. */
inline UfRecord ufRay(const std::vector<UfField>& fields, int number = 1) {
    constexpr std::size_t kHeaderWords = 25;
    UfRecord ray;
    ray.set(3, 46).set(4, 60).set(5, 60).set(6, number).set(8, number).set(10, 1);
    ray.set(19, 50).set(20, 30).set(21, 36).set(22, 7).set(23, 15).set(24, 18);
    ray.set(26, 14).set(27, 8).set(28, 10).set(29, 18).set(30, 20).set(31, 5).set(38, 98);
    ray.set(33, 64 * 90).set(34, 64 * 2).set(45, kUfMissing);
    const auto n = static_cast<int>(fields.size());
    ray.set(60, n).set(61, 1).set(62, n);
    std::size_t header = 63 + 2 * fields.size();
    std::size_t data = header + kHeaderWords * fields.size();
    for (std::size_t f = 0; f < fields.size(); ++f) {
        const int ngates = static_cast<int>(fields[f].words.size());
        ray.text(63 + 2 * f, fields[f].name).set(64 + 2 * f, static_cast<int>(header));
        ray.set(header, static_cast<int>(data)).set(header + 1, fields[f].scale);
        ray.set(header + 2, 2).set(header + 4, 250).set(header + 5, ngates);
        ray.set(header + 7, 64).set(header + kHeaderWords - 1, 0);
        for (const int word : fields[f].words) {
            ray.set(data++, word);
        }
        header += kHeaderWords;
    }
    return ray.set(2, static_cast<int>(ray.size()));
}

inline ByteVector ufFile(const std::vector<UfRecord>& records) {
    ByteVector file;
    for (const UfRecord& record : records) {
        const ByteVector framed = record.framed();
        file.insert(file.end(), framed.begin(), framed.end());
    }
    return file;
}

}  // namespace clutter::test

#endif

/* Decompression with bzip2 and zlib. Both libraries are options of the build. */
#include "scan/formats/compressed/decompress.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

#ifdef CLUTTERCLASSIFIER_HAS_COMPRESSION
#include <bzlib.h>
#include <zlib.h>

#include "scan/opened_file.h"
#endif

namespace scan {

#ifdef CLUTTERCLASSIFIER_HAS_COMPRESSION

namespace {

constexpr std::size_t kPieceBytes = 1 << 18;

/* Adds up what is unpacked. */
class Limit {
  public:
    explicit Limit(std::uint64_t maxBytes) : left_(maxBytes) {}
    void take(std::size_t bytes) {
        if (bytes > left_) {
            throw std::runtime_error("unpacks to far more than a file of this size can hold");
        }
        left_ -= bytes;
    }

  private:
    std::uint64_t left_;
};

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File openFile(const std::string& path) {
    File file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) {
        failReading(path, "cannot be opened");
    }
    return file;
}

void unpackGzip(const std::string& path, Limit limit, const Sink& sink) {
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(path.c_str(), "rb"), gzclose);
    if (!file) {
        failReading(path, "cannot be opened");
    }
    gzbuffer(file.get(), kPieceBytes);
    std::vector<std::uint8_t> piece(kPieceBytes);
    int count = 0;
    while ((count = gzread(file.get(), piece.data(), kPieceBytes)) > 0) {
        limit.take(static_cast<std::size_t>(count));
        sink(piece.data(), static_cast<std::size_t>(count));
    }
    int error = 0;
    gzerror(file.get(), &error);
    if (count < 0 || error != Z_OK) {
        throw std::runtime_error("is a damaged gzip file, or cut short");
    }
}

/* One member of a bzip2 file; what was read past its end goes to the next one. */
class Bzip2Member {
  public:
    Bzip2Member(std::FILE* file, std::vector<char>& unused) {
        int error = BZ_OK;
        stream_ =
            BZ2_bzReadOpen(&error, file, 0, 0, unused.data(), static_cast<int>(unused.size()));
        if (error != BZ_OK) {
            fail();
        }
    }
    Bzip2Member(const Bzip2Member&) = delete;
    Bzip2Member& operator=(const Bzip2Member&) = delete;
    ~Bzip2Member() {
        int error = BZ_OK;
        BZ2_bzReadClose(&error, stream_);
    }

    std::vector<char> unpack(Limit& limit, const Sink& sink) {
        std::vector<std::uint8_t> piece(kPieceBytes);
        int error = BZ_OK;
        while (error == BZ_OK) {
            const int count =
                BZ2_bzRead(&error, stream_, piece.data(), static_cast<int>(piece.size()));
            if (error != BZ_OK && error != BZ_STREAM_END) {
                fail();
            }
            limit.take(static_cast<std::size_t>(count));
            sink(piece.data(), static_cast<std::size_t>(count));
        }
        void* rest = nullptr;
        int count = 0;
        BZ2_bzReadGetUnused(&error, stream_, &rest, &count);
        const char* chars = static_cast<const char*>(rest);
        return {chars, chars + count};
    }

  private:
    [[noreturn]] static void fail() {
        throw std::runtime_error("is a damaged bzip2 file, or cut short");
    }
    BZFILE* stream_ = nullptr;
};

bool atEnd(std::FILE* file) {
    const int next = std::getc(file);
    std::ungetc(next, file);
    return next == EOF;
}

void unpackBzip2File(std::FILE* file, Limit limit, const Sink& sink) {
    std::vector<char> unused;
    do {
        unused = Bzip2Member(file, unused).unpack(limit, sink);
    } while (!unused.empty() || !atEnd(file));
}

}  // namespace

void requireBzip2() {}

bool unpackBzip2(const std::uint8_t* bytes, std::size_t size, std::size_t maxBytes,
                 std::vector<std::uint8_t>& out) {
    bz_stream stream{};
    if (BZ2_bzDecompressInit(&stream, 0, 0) != BZ_OK) {
        return false;
    }
    stream.next_in = reinterpret_cast<char*>(const_cast<std::uint8_t*>(bytes));
    stream.avail_in = static_cast<unsigned>(size);
    std::vector<std::uint8_t> piece(kPieceBytes);
    int result = BZ_OK;
    while (result == BZ_OK) {
        stream.next_out = reinterpret_cast<char*>(piece.data());
        stream.avail_out = kPieceBytes;
        result = BZ2_bzDecompress(&stream);
        const std::size_t count = kPieceBytes - stream.avail_out;
        out.insert(out.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(count));
        if (out.size() > maxBytes || (count == 0 && stream.avail_in == 0)) {
            break;
        }
    }
    BZ2_bzDecompressEnd(&stream);
    return result == BZ_STREAM_END;
}

void unpackFile(const std::string& path, std::uint64_t maxBytes, const Sink& sink) {
    const File file = openFile(path);
    const int first = std::getc(file.get());
    std::rewind(file.get());
    if (first == 'B') {
        unpackBzip2File(file.get(), Limit(maxBytes), sink);
    } else {
        unpackGzip(path, Limit(maxBytes), sink);
    }
}

void packFile(const std::string& from, const std::string& to) {
    const File source = openFile(from);
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> target(gzopen(to.c_str(), "wb"), gzclose);
    std::vector<std::uint8_t> piece(kPieceBytes);
    std::size_t count = 0;
    bool good = target != nullptr;
    while (good && (count = std::fread(piece.data(), 1, piece.size(), source.get())) > 0) {
        good = gzwrite(target.get(), piece.data(), static_cast<unsigned>(count)) ==
               static_cast<int>(count);
    }
    if (!good || gzflush(target.get(), Z_FINISH) != Z_OK) {
        throw std::runtime_error("cannot write a compressed file");
    }
}

#else

namespace {

constexpr char kMissing[] =
    "which this build leaves out: configure it with CLUTTERCLASSIFIER_COMPRESSION=ON";

}

void requireBzip2() {
    throw std::runtime_error(std::string("the records of NEXRAD Level 2 need bzip2, ") + kMissing);
}

bool unpackBzip2(const std::uint8_t*, std::size_t, std::size_t, std::vector<std::uint8_t>&) {
    return false;
}

void unpackFile(const std::string&, std::uint64_t, const Sink&) {
    throw std::runtime_error(std::string("compressed files need zlib and bzip2, ") + kMissing);
}

void packFile(const std::string&, const std::string&) {
    throw std::runtime_error(std::string("compressed files need zlib, ") + kMissing);
}

#endif

}  // namespace scan

/* Whole files into memory: any size, pipes, endless lines, and files beyond the bounds. */
#include "base/files/file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <thread>

#include "support/temp_dir.h"

namespace {

using clutter::base::readWholeFile;
using namespace clutter::test;

ByteVector numbered(std::size_t n) {
    ByteVector bytes(n);
    for (std::size_t i = 0; i < n; ++i) {
        bytes[i] = static_cast<unsigned char>(i * 7 + i / 251);
    }
    return bytes;
}

TEST(ReadWholeFile, GivesEveryByteOfAnySize) {
    TempDir dir;
    const std::string path = dir.file("bytes");
    for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 131072u, 1000003u}) {
        const ByteVector bytes = numbered(size);
        writeFile(path, bytes);
        const auto read = readWholeFile(path.c_str());
        ASSERT_TRUE(read.has_value()) << size;
        EXPECT_TRUE(*read == bytes) << size;
    }
}

TEST(ReadWholeFile, ReadsAPipeToItsEnd) {
    TempDir dir;
    const std::string path = dir.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const ByteVector bytes = numbered(300000);
    std::thread writer([&] { writeFile(path, bytes); });
    const auto read = readWholeFile(path.c_str());
    writer.join();
    ASSERT_TRUE(read.has_value());
    EXPECT_TRUE(*read == bytes);
}

TEST(ReadTextFile, RefusesAnEndlessLine) {
    TempDir dir;
    const std::string path = dir.file("lines");
    ByteVector bytes(clutter::base::kMaxLineBytes + 1, 'x');
    bytes.push_back('\n');
    writeFile(path, bytes);
    EXPECT_FALSE(clutter::base::readTextFile(path.c_str()).has_value());
    for (const char end : {'\n', '\r'}) {
        bytes[bytes.size() / 2] = static_cast<unsigned char>(end);
        writeFile(path, bytes);
        const auto read = clutter::base::readTextFile(path.c_str());
        ASSERT_TRUE(read.has_value());
        EXPECT_TRUE(*read == bytes);
    }
    EXPECT_FALSE(clutter::base::readTextFile("/dev/zero").has_value());
}

TEST(ReadWholeFile, DistinguishesUnreadableFromEmpty) {
    TempDir dir;
    EXPECT_FALSE(readWholeFile(nullptr).has_value());
    EXPECT_FALSE(readWholeFile(dir.file("absent").c_str()).has_value());
    EXPECT_FALSE(readWholeFile(dir.path().c_str()).has_value());
    EXPECT_TRUE(readWholeFile("/dev/null").has_value());
}

TEST(ReadWholeFile, RefusesAFileBeyondTheLimitBeforeItTakesMemory) {
    TempDir dir;
    const std::string path = dir.file("sparse");
    writeFile(path, {1, 2, 3});
    std::error_code failed;
    std::filesystem::resize_file(path, std::uintmax_t{1} << 40, failed);
    if (failed) {
        GTEST_SKIP() << "no sparse files here";
    }
    EXPECT_FALSE(readWholeFile(path.c_str()).has_value());
}

}  // namespace

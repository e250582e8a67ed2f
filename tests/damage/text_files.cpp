/* Text files with what their readers must hold to. */
#include "damage/text_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/bits.h"

namespace clutter::test {

namespace {

constexpr int kMostCellsToCopy = 4096;

ByteVector bytesOf(const std::string& text) {
    return ByteVector(text.begin(), text.end());
}

/* What a host hands over and gets back: an array that it owns, and two counts. */
struct Block {
    float* cells = new float[1]{77.0f};
    int rows = -7, columns = -7;

    Block() = default;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { delete[] cells; }

    bool untouched() const { return rows == -7 && columns == -7 && cells[0] == 77.0f; }
    /* Reads every value. */
    std::vector<float> values() const {
        const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
        return {cells, cells + count};
    }
};

/* Text and columns change places: what was read column by column is written row by row. */
void copyColumns(const Block& block, const std::string& copy) {
    CDSP dsp;
    std::string out = copy;
    dsp.SaveDataToFile(out.data(), nullptr, block.cells, block.columns, block.rows, 1, 0);
    Block back;
    ASSERT_EQ(dsp.OnReadASCIIDataFile(out.data(), &back.cells, back.rows, back.columns, NAN), 1);
    ASSERT_EQ(back.rows, block.columns);
    ASSERT_EQ(back.columns, block.rows);
}

void copyGrid(Block& block, char* nodata, const std::string& copy) {
    CDSP dsp;
    std::string out = copy;
    dsp.SaveDataToGISformat(out.data(), block.cells, block.rows, block.columns, 0, block.rows, 0,
                            block.columns, 1.0f, 2.0f, 3.0f, nodata, 0);
    Block back;
    char text[1024];
    float x, y, size;
    ASSERT_EQ(dsp.ReadDataFromGISformat(out.data(), &back.cells, back.rows, back.columns, x, y,
                                        size, text),
              1);
    ASSERT_EQ(back.rows, block.rows);
    ASSERT_EQ(back.columns, block.columns);
    ASSERT_STREQ(text, nodata);
}

}  // namespace

ByteVector columnFileSeed(const std::string&) {
    return bytesOf(
        "2014  08  10  12  30  05 1.5 nan -2e1 \n2014  08  10  12  35  05 0.25 7 +3 \r\n"
        "2014  08  10  12  40  05 1 2 3 \r");
}

ByteVector nameListSeed(const std::string&) {
    return bytesOf("first.uf second.uf\r\n dir/third.plv\r\t" + std::string(1030, 'x') + "\nlast");
}

ByteVector gridFileSeed(const std::string&) {
    return bytesOf(
        "ncols\t\t3\nnrows\t\t2\r\nxllcorner\t-1.50\ryllcorner\t2.00\ncellsize\t250.00\n"
        "NODATA_value\t-9999\n 1.00 2.5e0 -3.00\n 4 nan 6\n");
}

void exerciseColumnFile(const std::string& path, const std::string& copy) {
    CDSP dsp;
    std::string in = path;
    Block block, rest;
    ASSERT_EQ(dsp.OnReadASCIIDataFile(in.data(), &block.cells, block.rows, block.columns, -1.0f),
              1);
    ASSERT_GE(block.rows, 0);
    ASSERT_EQ(block.columns > 0, block.rows > 0);
    std::unique_ptr<unsigned[]> times;
    unsigned* heldTimes = nullptr;
    dsp.LoadDataFromFile(in.data(), &heldTimes, &rest.cells, rest.rows, rest.columns, -1.0f);
    times.reset(heldTimes);
    const std::vector<float> all = block.values(), kept = rest.values();
    if (block.columns < 6) {
        ASSERT_EQ(rest.rows, 0);
        ASSERT_EQ(rest.columns, 0);
    } else {
        ASSERT_EQ(rest.rows, block.rows);
        const auto skipped = static_cast<std::ptrdiff_t>(6) * block.rows;
        ASSERT_TRUE(sameBits(kept, std::vector<float>(all.begin() + skipped, all.end())));
        volatile unsigned last = times[static_cast<std::size_t>(block.rows) - 1];
        (void)last;
    }
    if (block.rows > 0) {
        copyColumns(block, copy);
    }
}

void exerciseNameList(const std::string& path, const std::string&) {
    CDSP dsp;
    std::string in = path;
    char* names = new char[1];
    int count = -7;
    const int result = dsp.OnReadFNames(in.data(), &names, count);
    const std::unique_ptr<char[]> owner(names);
    ASSERT_EQ(result, 1);
    ASSERT_GE(count, 0);
    for (int i = 0; i < count; ++i) {
        const std::size_t length = strnlen(names + 1024 * i, 1024);
        ASSERT_LT(length, 1024u);
        char name[1024];
        dsp.getfnameonly(names + 1024 * i, name);
    }
}

void exerciseGridFile(const std::string& path, const std::string& copy) {
    CDSP dsp;
    std::string in = path;
    Block block;
    float x = -7, y = -7, size = -7;
    char nodata[1024] = "held";
    const int result = dsp.ReadDataFromGISformat(in.data(), &block.cells, block.rows, block.columns,
                                                 x, y, size, nodata);
    ASSERT_TRUE(result == 0 || result == 1);
    if (result == 0) {
        ASSERT_TRUE(block.untouched() && x == -7 && y == -7 && size == -7);
        ASSERT_STREQ(nodata, "held");
        return;
    }
    ASSERT_GE(block.rows, 0);
    ASSERT_GE(block.columns, 0);
    ASSERT_LT(std::strlen(nodata), 1024u);
    const std::size_t cells = block.values().size();
    // A text that begins with a zero byte is written as an empty one, and the next token takes its
    // place.
    if (cells > 0 && cells < kMostCellsToCopy && nodata[0] != '\0') {
        copyGrid(block, nodata, copy);
    }
}

}  // namespace clutter::test

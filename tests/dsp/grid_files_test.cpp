/* ASCII grids: the writer's cut and its two layouts, the reader's judgement. */
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::ByteVector;
using clutter::test::TempDir;
using Values = std::vector<float>;

class GridFiles : public testing::Test {
  protected:
    std::string text() const {
        const ByteVector bytes = clutter::test::readFile(path_);
        return std::string(bytes.begin(), bytes.end());
    }
    void put(const std::string& text) {
        clutter::test::writeFile(path_, ByteVector(text.begin(), text.end()));
    }
    /* 2 rows x 3 columns, cut as asked. */
    void save(Values data, int r0, int r1, int c0, int c1, int rowMajor) {
        char nodata[] = "-9999 ";
        dsp_.SaveDataToGISformat(path_.data(), data.data(), 2, 3, r0, r1, c0, c1, 1000.0f, -20.5f,
                                 250.0f, nodata, rowMajor);
    }
    int read() {
        float* held = data_.release();
        const int result = dsp_.ReadDataFromGISformat(path_.data(), &held, rows_, columns_, xll_,
                                                      yll_, cellsize_, nodata_);
        data_.reset(held);
        return result;
    }
    Values values() const { return {data_.get(), data_.get() + rows_ * columns_}; }

    TempDir dir_;
    std::string path_ = dir_.file("grid.asc");
    CDSP dsp_;
    std::unique_ptr<float[]> data_{new float[1]{77.0f}};
    int rows_ = -7, columns_ = -7;
    float xll_ = -7, yll_ = -7, cellsize_ = -7;
    char nodata_[1024] = "held";
};

std::string header(const std::string& ncols, const std::string& nrows) {
    return "ncols " + ncols + "\nnrows " + nrows +
           "\nxllcorner 1.5\nyllcorner 2\ncellsize 3\nnodata_value -9\n";
}

TEST_F(GridFiles, TheLastRowIsTheFirstLine) {
    const std::string head =
        "ncols\t\t3\nnrows\t\t2\nxllcorner\t1000.00\nyllcorner\t-20.50\ncellsize\t250.00\n"
        "nodata_value\t-9999 \n";
    save({1, 2, 3, 4, 5, 6.006f}, 0, 2, 0, 3, 1);
    EXPECT_EQ(text(), head + " 4.00 5.00 6.01\n 1.00 2.00 3.00\n");
    save({1, 4, 2, 5, 3, 6.006f}, 0, 2, 0, 3, 0);
    EXPECT_EQ(text(), head + " 4.00 5.00 6.01\n 1.00 2.00 3.00\n");
}

TEST_F(GridFiles, CutsAreClippedToTheGrid) {
    const Values data = {1, 2, 3, 4, 5, 6};
    save(data, -5, 1, 1, 99, 1);
    EXPECT_NE(text().find("ncols\t\t2\nnrows\t\t1\n"), std::string::npos);
    EXPECT_NE(text().find("-9999 \n 5.00 6.00\n"), std::string::npos);
    save(data, 1, 9, -1, 1, 0);
    EXPECT_NE(text().find("ncols\t\t1\nnrows\t\t1\n"), std::string::npos);
    EXPECT_NE(text().find("-9999 \n 1.00\n"), std::string::npos);
    std::filesystem::remove(path_);
    for (const auto& [r0, r1, c0, c1] :
         {std::array{1, 1, 0, 3}, {2, 3, 0, 3}, {0, 2, 3, 9}, {0, 2, 2, 1}, {0, -1, 0, 3}}) {
        save(data, r0, r1, c0, c1, 1);
        EXPECT_FALSE(std::filesystem::exists(path_)) << r0 << r1 << c0 << c1;
    }
}

TEST_F(GridFiles, ColumnMajorGridsComeBack) {
    const Values grid = {1, 4, 2, 5, 3, 6.25f};
    save(grid, 0, 2, 0, 3, 0);
    ASSERT_EQ(read(), 1);
    EXPECT_EQ(rows_, 2);
    EXPECT_EQ(columns_, 3);
    EXPECT_EQ(values(), grid);
    EXPECT_EQ((Values{xll_, yll_, cellsize_}), (Values{1000, -20.5f, 250}));
    EXPECT_STREQ(nodata_, "-9999");
}

TEST_F(GridFiles, WhereLinesEndDoesNotMatter) {
    for (const char* body : {"1 2\n3 4\n", "1 2\r\n3 4\r\n", "1\r2\r3\r4", "1 2 3 4 5 6"}) {
        std::string whole = header("2", "2") + body;
        if (body[1] == '\r') {
            std::replace(whole.begin(), whole.end(), '\n', '\r');
        }
        put(whole);
        ASSERT_EQ(read(), 1) << body;
        EXPECT_EQ(values(), (Values{3, 1, 4, 2})) << body;
    }
}

TEST_F(GridFiles, KeysAreExact) {
    const std::string sound = header("1", "1") + "5\n";
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string changed = sound;
        changed.replace(changed.find(from), from.size(), to);
        put(changed);
        return read();
    };
    EXPECT_EQ(with("nodata_value", "NODATA_value"), 1);
    EXPECT_EQ(with("ncols", "NCOLS"), 0);
    EXPECT_EQ(with("nodata_value", "NODATA_VALUE"), 0);
    EXPECT_EQ(with("xllcorner", "xllcenter"), 0);
    EXPECT_EQ(with("nrows 1\n", ""), 0);
    EXPECT_EQ(with("cellsize 3\n", "cellsize\n"), 0);
    EXPECT_EQ(with("-9\n5", ""), 0);
    EXPECT_EQ(with("ncols", "cols"), 0);
}

TEST_F(GridFiles, ImpossibleCountsAreRefused) {
    const std::pair<const char*, const char*> cases[] = {{"-1", "2"},
                                                         {"2", "-1"},
                                                         {"-1", "-1"},
                                                         {"2147483647", "2147483647"},
                                                         {"2147483648", "1"},
                                                         {"99999999999999999999", "1"},
                                                         {"1", "-99999999999999999999"},
                                                         {"262145", "1"},
                                                         {"65536", "65536"},
                                                         {"4294967297", "1"}};
    for (const auto& [ncols, nrows] : cases) {
        put(header(ncols, nrows) + "1 2 3 4\n");
        EXPECT_EQ(read(), 0) << ncols << " x " << nrows;
    }
    EXPECT_EQ(data_[0], 77.0f);
    EXPECT_EQ(rows_, -7);
    EXPECT_EQ(xll_, -7.0f);
    EXPECT_STREQ(nodata_, "held");
}

TEST_F(GridFiles, ShortFilesLeaveZeros) {
    put(header("3", "2") + "1 2 x\n4");
    ASSERT_EQ(read(), 1);
    EXPECT_EQ(values(), (Values{4, 1, 0, 2, 0, 0}));
    put(header("0", "2.9") + "1 2 3 4");
    ASSERT_EQ(read(), 1);
    EXPECT_EQ(columns_, 0);
    EXPECT_EQ(rows_, 2);
}

TEST_F(GridFiles, TheNoDataTextIsBounded) {
    put("ncols 1 nrows 1 xllcorner 0 yllcorner 0 cellsize 1 nodata_value " +
        std::string(5000, '9') + " 5");
    ASSERT_EQ(read(), 1);
    EXPECT_EQ(std::string(nodata_), std::string(1023, '9'));
    EXPECT_EQ(values(), Values{5});
    float* held = nullptr;
    EXPECT_EQ(dsp_.ReadDataFromGISformat(path_.data(), &held, rows_, columns_, xll_, yll_,
                                         cellsize_, nullptr),
              1);
    delete[] held;
    EXPECT_EQ(
        dsp_.ReadDataFromGISformat(nullptr, &held, rows_, columns_, xll_, yll_, cellsize_, nodata_),
        0);
}

}  // namespace

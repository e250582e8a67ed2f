/* Column files, single-column appends and raw dumps. */
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/Ctiempo.h"
#include "support/bits.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::ByteVector;
using clutter::test::sameBits;
using clutter::test::TempDir;
using Values = std::vector<float>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class ColumnFiles : public testing::Test {
  protected:
    std::string text() const {
        const ByteVector bytes = clutter::test::readFile(path_);
        return std::string(bytes.begin(), bytes.end());
    }
    void put(const std::string& text) {
        clutter::test::writeFile(path_, ByteVector(text.begin(), text.end()));
    }

    /* Reads into arrays that hold something already, as a host's do. */
    int read(float nanValue = -99.0f) {
        float* held = data_.release();
        const int result = dsp_.OnReadASCIIDataFile(path_.data(), &held, rows_, columns_, nanValue);
        data_.reset(held);
        return result;
    }
    void load(float nanValue = -99.0f) {
        float* heldData = data_.release();
        unsigned* heldTimes = times_.release();
        dsp_.LoadDataFromFile(path_.data(), &heldTimes, &heldData, rows_, columns_, nanValue);
        data_.reset(heldData);
        times_.reset(heldTimes);
    }
    Values values() const { return {data_.get(), data_.get() + rows_ * columns_}; }

    TempDir dir_;
    std::string path_ = dir_.file("columns.dat");
    CDSP dsp_;
    std::unique_ptr<float[]> data_{new float[1]{77.0f}};
    std::unique_ptr<unsigned[]> times_{new unsigned[1]{77}};
    int rows_ = -7, columns_ = -7;
};

TEST_F(ColumnFiles, WrittenAsThePrintRoutinesWriteThem) {
    const std::pair<int, const char*> formats[] = {{0, "%g "},    {-1, "%1.0f "}, {1, "%1.1f "},
                                                   {2, "%1.2f "}, {3, "%1.3f "},  {9, "%1.3f "},
                                                   {-2, "%1.3f "}};
    Values data = {0.5f,    -0.0f, 1e-7f, 0.05f,     0.15f,      2.5f,   123456.7f, 1e6f,
                   3.4e38f, kNan,  -kNan, kInfinity, -kInfinity, 1e-45f, 0.005f,    99999.95f};
    std::mt19937 random(3);
    while (data.size() < 20000) {
        data.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
    }
    for (const auto& [precision, format] : formats) {
        std::string expected;
        for (const float value : data) {
            char number[64];
            std::snprintf(number, sizeof number, format, static_cast<double>(value));
            expected += number;
        }
        dsp_.SaveDataToFile(path_.data(), nullptr, data.data(), 1, static_cast<int>(data.size()), 1,
                            precision);
        EXPECT_TRUE(text() == expected + "\n") << "precision " << precision;
    }
}

TEST_F(ColumnFiles, ModeSaysWhetherAFileIsContinued) {
    unsigned time = 1272859506;
    float row[] = {1.25f, -3.0f};
    put("old\n");
    dsp_.SaveDataToFile(path_.data(), &time, row, 1, 2, 0, 2);
    EXPECT_EQ(text(), "old\n2010  05  03  04  05  06 1.25 -3.00 \n");
    dsp_.SaveDataToFile(path_.data(), nullptr, row, 2, 1, 1, 1);
    EXPECT_EQ(text(), "1.2 \n-3.0 \n");
    dsp_.SaveArrayOnFile(row, 2, path_.data());
    EXPECT_EQ(text(), "1.2 \n-3.0 \n1.2500\n-3.0000\n");
    dsp_.savedata2binary(path_.data(), row, 1, 1);
    dsp_.savedata2binary(path_.data(), row + 1, 1, 0);
    const ByteVector bytes = clutter::test::readFile(path_);
    ASSERT_EQ(bytes.size(), sizeof row);
    EXPECT_EQ(std::memcmp(bytes.data(), row, sizeof row), 0);
}

TEST_F(ColumnFiles, NothingToWriteIsNoFile) {
    float row[] = {1.0f};
    char noPath[] = "NULL";
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(dir_.path());
    dsp_.SaveDataToFile(path_.data(), nullptr, row, 0, 1, 1, 0);
    dsp_.SaveDataToFile(path_.data(), nullptr, row, 1, 0, 1, 0);
    dsp_.SaveDataToFile(path_.data(), nullptr, nullptr, 1, 1, 1, 0);
    dsp_.SaveDataToFile(nullptr, nullptr, row, 1, 1, 1, 0);
    dsp_.SaveDataToFile(noPath, nullptr, row, 1, 1, 1, 0);
    dsp_.savedata2binary(path_.data(), row, 0, 1);
    dsp_.savedata2binary(path_.data(), nullptr, 1, 1);
    dsp_.savedata2binary(nullptr, row, 1, 1);
    dsp_.savedata2binary(noPath, row, 1, 1);
    dsp_.SaveArrayOnFile(nullptr, 1, path_.data());
    dsp_.SaveArrayOnFile(row, 1, nullptr);
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::is_empty(dir_.path()));
}

TEST_F(ColumnFiles, MatricesAreReadColumnByColumn) {
    struct Case {
        const char* text;
        int rows, columns;
        Values values;
    };
    const Case cases[] = {
        {"1 2 3\n4 5 6\n7 8 9\n10\n", 3, 3, {1, 4, 7, 2, 5, 8, 3, 6, 9}},
        {"1 2\r\n3 4\r\n", 2, 2, {1, 3, 2, 4}},
        {"1 2\r3 4\r", 2, 2, {1, 3, 2, 4}},
        {"1 2\n\n3\n4", 2, 2, {1, 3, 2, 4}},
        {"1 2 3", 1, 3, {1, 2, 3}},
        {"\n1 2\n3 4\n", 4, 1, {1, 2, 3, 4}},
        {"  \t 1\v2 \n3 4\n", 2, 2, {1, 3, 2, 4}},
        {"nan NaN -nan nano x 1.5x 1e3 -inf 1e99 1,5\n",
         1,
         10,
         {-99, kNan, kNan, kNan, 0, 1.5f, 1000, -kInfinity, kInfinity, 1}},
        {"", 0, 0, {}},
        {" \n \n", 0, 0, {}},
    };
    for (const Case& c : cases) {
        put(c.text);
        ASSERT_EQ(read(), 1) << c.text;
        EXPECT_EQ(rows_, c.rows) << c.text;
        EXPECT_EQ(columns_, c.columns) << c.text;
        EXPECT_TRUE(sameBits(values(), c.values)) << c.text;
    }
}

TEST_F(ColumnFiles, TheValueForNanHasSixDecimals) {
    put("nan 1\r\n2 nan");
    ASSERT_EQ(read(1.23456789f), 1);
    EXPECT_EQ(values(), (Values{1.234568f, 2, 1, 1.234568f}));
    ASSERT_EQ(read(kNan), 1);
    EXPECT_TRUE(std::isnan(data_[0]));
}

TEST_F(ColumnFiles, LongTokensAreWholeTokens) {
    put(std::string(100000, '0') + "12 " + std::string(5000, 'x') + "\n3 4\n");
    ASSERT_EQ(read(), 1);
    EXPECT_EQ(values(), (Values{12, 3, 0, 4}));
}

TEST_F(ColumnFiles, WhatCannotBeReadLeavesEverything) {
    const float* held = data_.get();
    EXPECT_EQ(read(), -1);
    load();
    EXPECT_EQ(dsp_.OnReadASCIIDataFile(nullptr, nullptr, rows_, columns_, 0.0f), -1);
    EXPECT_EQ(data_.get(), held);
    EXPECT_EQ(times_[0], 77u);
    EXPECT_EQ(rows_, -7);
    EXPECT_EQ(columns_, -7);
}

TEST_F(ColumnFiles, WrittenRowsComeBackWithTheirTimes) {
    std::vector<unsigned> times = {0, 1272859506, 951782400, 4102444799u};
    Values data = {1, 2, 3.5f, kNan, 5, 6, -7.25f, 8};
    dsp_.SaveDataToFile(path_.data(), times.data(), data.data(), 4, 2, 1, 2);
    load(-5.0f);
    ASSERT_EQ(rows_, 4);
    ASSERT_EQ(columns_, 2);
    EXPECT_EQ(values(), (Values{1, 3.5f, 5, -7.25f, 2, -5, 6, 8}));
    EXPECT_EQ(std::vector<unsigned>(times_.get(), times_.get() + 4), times);
}

TEST_F(ColumnFiles, FewerThanSixColumnsAreNoRows) {
    struct Case {
        const char* text;
        int rows, columns;
    };
    for (const Case& c : {Case{"2014 1 1 0 0\n2014 1 1 0 0\n", 0, 0}, Case{"", 0, 0},
                          Case{"2014 1 1 0 0 7\n", 1, 0}, Case{"2014 1 1 0 0 7 9\n", 1, 1}}) {
        put(c.text);
        load();
        EXPECT_EQ(rows_, c.rows) << c.text;
        EXPECT_EQ(columns_, c.columns) << c.text;
        ASSERT_NE(data_, nullptr);
        if (c.rows) {
            EXPECT_EQ(times_[0], 1388534407u);
        }
    }
}

TEST_F(ColumnFiles, DatesOutsideTheCalendarAreTimesAllTheSame) {
    Ctiempo time;
    put("2014 13 1 0 0 0 1\n2014 -5 1 0 0 0 1\nnan 1e30 -1e30 nan inf -inf 1\n"
        "2014.9 1.9 2.9 3.9 4.9 5.9 1\n");
    load(1e35f);
    ASSERT_EQ(rows_, 4);
    EXPECT_EQ(times_[0], time.GetSecondsSince1970(2015, 1, 1, 0, 0, 0));
    EXPECT_EQ(times_[1], time.GetSecondsSince1970(2014, 1, 1, 0, 0, 0));
    EXPECT_EQ(times_[3], time.GetSecondsSince1970(2014, 1, 2, 3, 4, 5));
}

}  // namespace

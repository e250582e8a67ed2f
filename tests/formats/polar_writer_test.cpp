/* Polar data files that are written: header, every storage, shortened copies. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "clutterclassifier/CThuPolDaFor.h"
#include "formats/polar_bytes.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr double kPi = std::numbers::pi;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

int wordAt(const ByteVector& bytes, std::size_t offset) {
    std::int16_t word;
    std::memcpy(&word, bytes.data() + offset, 2);
    return word;
}

class PolarWriter : public testing::Test {
  protected:
    /* Two rays of a product with the given values, half of them each. */
    void fill(Cpluvek& record, int product, const std::vector<float>& values) {
        record.radarid = static_cast<short>(product);
        record.nrays = 2;
        record.ngates = static_cast<int>(values.size() / 2);
        record.coordtype = record.firstgate = record.recindex = 0;
        record.gatesize = 250.0f;
        delete[] record.data;
        delete[] record.angles;
        record.data = new float[values.size()];
        std::copy(values.begin(), values.end(), record.data);
        record.angles =
            new float[3]{static_cast<float>(0.5 * kPi / 180), static_cast<float>(350 * kPi / 180),
                         static_cast<float>(-kPi / 180)};
    }

    TempDir dir_;
    std::string path_ = dir_.file("written.dat");
    CThuPolDaFor polar_;
    Cpluvek values_, layer_;
};

TEST_F(PolarWriter, HeaderWords) {
    fill(values_, 3333, {1, 2, 3, 4});
    values_.year = 2007;
    values_.month = 8;
    values_.day = 10;
    values_.hour = 18;
    values_.minute = 20;
    values_.second = 5;
    values_.longitude = -1.51f;
    values_.latitude = 51.255f;
    values_.altitude = 140.9f;
    values_.radarconst = 65.5f;
    values_.wavelength = 0.032f;
    values_.beamwidth = 0.017453292f;
    values_.pulsedepth = 150.0f;
    values_.rpm = 10.0f;
    values_.nsamples = 45.7f;
    values_.prf = 70000.0f;
    values_.nyquist = std::numeric_limits<float>::infinity();
    values_.firstgate = 3;
    polar_.SetMagicNumber(7);
    EXPECT_EQ(polar_.swapflag, 7);
    ASSERT_EQ(polar_.WriteSingleParameterData(path_.c_str(), &values_, nullptr), 1);
    const ByteVector bytes = readFile(path_);
    ASSERT_EQ(bytes.size(), 320u + 2 * (10 + 4) + 4);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), "RADF\x80\x03\xC0\x01");
    const std::pair<std::size_t, std::vector<int>> words[] = {
        {8, {1, 1, 2007, 8, 10, 18, 20, 5, 2007, 8, 10, 18, 20, 5, 2007, 8, 10, 18, 20, 5}},
        {48, {3, 771, -1, -30, -35, 51,  15, 18, 20,  5816, 1582, 140, 3,
              3, 1,   0,  1,   3,   655, 0,  32, 0,   100,  0,    0,   0,
              0, 0,   0,  0,   1,   1,   2,  2,  250, 150,  3600, 45,  70000 - 65536,
              0, 0,   0}},
        {132, {0, 0, 0, 0, 0, 0, 35, 0, 0, 0, 20, 0, 1, 200, 160, 0, 0, 0, 3333, 0, 4, 1, 0}},
        {256, {0, 2, 2, 750, 0, 0, 0, 0, 0, 5, 0}},
        {320, {0, 35000 - 65536, 50, 8, 45, 1, 2, 0, -100, 50, 8, 45, 3, 4, 0, 0}},
    };
    for (const auto& [offset, expected] : words) {
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(wordAt(bytes, offset + 2 * i), expected[i]) << "at " << offset + 2 * i;
        }
    }
    polar_.SetMagicNumber(0);
    values_.beamwidth = 0.0010471975f;  // formed in the stated order, 0.06 degrees are not quite 6
    ASSERT_EQ(polar_.WriteSingleParameterData(path_.c_str(), &values_, nullptr), 1);
    EXPECT_EQ(readFile(path_)[0], 'A');
    EXPECT_EQ(wordAt(readFile(path_), 92), 5);
}

/* What is written comes back, truncated and wrapped as its storage asks for. */
TEST_F(PolarWriter, EveryStorageComesBack) {
    const float inf = std::numeric_limits<float>::infinity();
    const std::vector<float> values = {0.0f, -1.9f, 260.5f, 70000.0f, 5e9f, kNan, -inf, 7.5f};
    struct Row {
        int product;
        std::vector<float> back;
    };
    const float wrapped = 705032704.0f;  // 5e9 modulo 2^32
    const Row rows[] = {
        {1113, values},
        {1120, {0, 255, 4, 112, 0, 0, 0, 7}},
        {1521, {0, 65535, 260, 4464, 61952, 0, 0, 7}},
        {1500, {0, -1, 260, 4464, 61952 - 65536, 0, 0, 7}},
        {1119, {0, -1, 260, 70000, wrapped, 0, 0, 7}},
        {1711, {0, 4294967295.0f, 260, 70000, wrapped, 0, 0, 7}},
    };
    fill(layer_, 0, {0, 1, 2, 3, 255, 256, kNan, -1});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.product);
        fill(values_, row.product, values);
        ASSERT_EQ(polar_.WriteSingleParameterData(path_.c_str(), &values_, &layer_), 1);
        Cpluvek back[2];
        ASSERT_EQ(polar_.ReadPolarData(path_.data(), back, 0, 0), 1);
        ASSERT_EQ(back[0].ngates, 4);
        const float layer[] = {0, 1, 2, 3, 255, 0, 0, 255};
        for (int i = 0; i < 8; ++i) {
            const float expected = row.back[static_cast<std::size_t>(i)];
            const float got = back[0].data[i];
            EXPECT_TRUE(got == expected || (std::isnan(got) && std::isnan(expected)))
                << got << " for " << expected;
            EXPECT_EQ(back[1].data[i], layer[i]) << i;
        }
        for (int a = 0; a < 3; ++a) {
            EXPECT_NEAR(back[1].angles[a], values_.angles[a], 1e-6);
        }
    }
}

TEST_F(PolarWriter, RefusalsAndMissingParts) {
    fill(values_, 2213, {1, 2, 3, 4});
    EXPECT_EQ(polar_.WriteSingleParameterData(path_.c_str(), &values_, nullptr), 0);
    EXPECT_TRUE(readFile(path_).empty());
    EXPECT_EQ(polar_.WriteSingleParameterData(path_.c_str(), nullptr, nullptr), 0);
    fill(values_, 1120, {1, 2, 3, 4});
    const std::string nowhere = dir_.file("no/such/file");
    EXPECT_EQ(polar_.WriteSingleParameterData(nowhere.c_str(), &values_, nullptr), 0);
    EXPECT_EQ(polar_.WriteSingleParameterData("/dev/full", &values_, nullptr), 0);
    // No values, no angles, a layer that is too short: zeros.
    fill(layer_, 0, {9, 8});
    delete[] values_.data;
    delete[] values_.angles;
    values_.data = values_.angles = nullptr;
    ASSERT_EQ(polar_.WriteSingleParameterData(path_.c_str(), &values_, &layer_), 1);
    const ByteVector bytes = readFile(path_);
    ASSERT_EQ(bytes.size(), 320u + 2 * (10 + 2) + 4);
    EXPECT_EQ(ByteVector(bytes.end() - 6, bytes.end()), (ByteVector{0, 0, 9, 8, 0, 0}));
}

/* --- shortened copies --- */

/* The gates that a beam at an elevation of e degrees (and a half) needs up to 10 km. */
int gatesTo10Km(double elevationDeg, double gateSize) {
    const double re = 6.378e6, sine = std::sin((elevationDeg + 0.5) * kPi / 180);
    double range = 0;  // the height grows with range: walk it up in the steps that are kept
    const auto height = [&](double r) {
        return std::sqrt(re * re + r * r + 2 * re * r * sine) - re;
    };
    while (height(range) < 10000) {
        range += 5000;
    }
    return static_cast<int>(range / gateSize);
}

TEST_F(PolarWriter, RepackingKeepsTheGatesBelowTenKilometres) {
    struct Row {
        int product, layout;
        std::size_t gateBytes;
        int elevation;  // 0.1 degree
    };
    const Row rows[] = {{2211, 252, 9, 20},
                        {2211, 260, 10, 90},
                        {2211, 280, 10, 200},
                        {2212, 260, 8, 35},
                        {2212, 1, 8, 45}};
    std::mt19937 random(6);
    const int gateSize = 2500;
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.product) + ", " + std::to_string(row.layout));
        PolarBytes file = randomPolarFile(row.product, row.gateBytes, false, 3, 120, random);
        file.set(274, row.elevation).set(116, gateSize).set(200, 77);
        writeFile(path_, file.bytes());
        std::string out = dir_.file("packed.dat");
        ASSERT_EQ(polar_.PackAgainDataFiles(path_.data(), out.data(), row.layout), 1);
        const int kept = gatesTo10Km(row.elevation / 10.0, gateSize);
        ASSERT_LT(kept, 120);
        ByteVector expected(file.bytes().begin(), file.bytes().begin() + 320);
        const auto count = static_cast<std::uint16_t>(kept);
        std::memcpy(expected.data() + 114, &count, 2);
        std::memcpy(expected.data() + 260, &count, 2);
        for (std::size_t r = 0; r < 3; ++r) {
            const auto start = file.bytes().begin() +
                               static_cast<std::ptrdiff_t>(320 + r * (10 + 120 * row.gateBytes));
            expected.insert(expected.end(), start,
                            start + static_cast<std::ptrdiff_t>(
                                        10 + static_cast<std::size_t>(kept) * row.gateBytes));
        }
        EXPECT_EQ(readFile(out), expected);
    }
}

TEST_F(PolarWriter, RepackingDeclinesWhatItWouldNotShorten) {
    struct Row {
        const char* what;
        PolarBytes file;
        int layout;
    };
    std::mt19937 random(7);
    const auto base = [&](int product, std::size_t bytes) {
        return randomPolarFile(product, bytes, false, 2, 120, random).set(116, 2500).set(274, 20);
    };
    PolarBytes low = base(2212, 8), later = base(2212, 8), shorter = base(2212, 8),
               pointlike = base(2212, 8);
    const Row rows[] = {
        {"1.5 degrees with the half", low.set(274, 10), 252},
        {"first gate elsewhere", later.set(262, 2500), 252},
        {"short already", shorter.set(114, 40), 252},
        {"no gate length", pointlike.set(116, 0), 252},
        {"eight fields", base(2213, 10), 252},
        {"unknown layout of seven fields", base(2211, 9), 250},
        {"four fields", base(2122, 4), 252},
        {"unknown product", base(2215, 4), 252},
    };
    std::string out = dir_.file("packed.dat");
    for (const Row& row : rows) {
        writeFile(path_, row.file.bytes());
        EXPECT_EQ(polar_.PackAgainDataFiles(path_.data(), out.data(), row.layout), 0) << row.what;
        EXPECT_TRUE(readFile(out).empty()) << row.what;
    }
    writeFile(path_, base(2212, 8).set(274, 11).bytes());
    EXPECT_EQ(polar_.PackAgainDataFiles(path_.data(), out.data(), 252), 1) << "just above";
    std::string nowhere = dir_.file("no/such/file");
    EXPECT_EQ(polar_.PackAgainDataFiles(path_.data(), nowhere.data(), 252), 0);
    EXPECT_EQ(polar_.PackAgainDataFiles(nowhere.data(), out.data(), 252), 0);
}

}  // namespace

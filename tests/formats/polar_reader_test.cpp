/* Polar data files made word by word: every product, cut files, refusals. */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/CThuPolDaFor.h"
#include "formats/polar_bytes.h"
#include "support/bits.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr double kPi = std::numbers::pi;

/* One gate of every product, in each layout that matters to it and one that it does not have. */
constexpr unsigned char kGate[] = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x11, 0x22};
struct Kind {
    int product;
    int layout;
    std::size_t gateBytes;
    bool wholeRays;             // a cut ray repeats the one before, not the gate before
    std::vector<float> values;  // of the fields at the gate above

    bool hasLayer() const { return product < 2000 || product > 3000; }
};

constexpr float kV = 0.518183589f, kW = 7.42328119f, kA = -2.80104899f, kP = -133.505859f;
const Kind kKinds[] = {
    {2111, 252, 2, true, {72.2f, 2.5f}},
    {2122, 252, 4, false, {72.2f, 2.5f, kV, 0.4375f}},
    {2141, 260, 4, false, {72.2f, 2.5f, 0.527689397f, -21.25f}},
    {2211, 252, 9, false, {72.2f, 3.75f, -11.25f, -0.115f, kV, kW, -10}},
    {2211, 260, 10, false, {72.2f, 3.75f, -136.40625f, -0.03f, kV, kW, -10}},
    {2211, 280, 10, false, {72.2f, 3.75f, kP, 1, kV, kW, -10}},
    {2211, 300, 0, false, {0, 0, 0, 0, 0, 0, 0}},
    {2212, 252, 8, false, {72.2f, -2.4f, kV, kW, kA}},
    {2212, 280, 8, false, {72.2f, -2.4f, kV, kW, kA}},
    {2212, 1, 0, false, {0, 0, 0, 0, 0}},
    {2213, 1, 10, false, {72.2f, 3.75f, kP, 1.03324f, kV, 1.88986433f, 2.5f, 7}},
    {2214, 0, 8, false, {72.2f, -2.4f, kV, kW, kA, 2.5f, 0.4375f}},
    {1113, 0, 4, true, {1.73782444e+34f, 5}},
    {1115, 0, 1, false, {18, 5}},
    {1117, 0, 4, false, {2018915346.0f, 5}},
    {1126, 0, 4, false, {2018915346.0f, 5}},
    {1400, 0, 2, false, {13330, 5}},
    {1521, 0, 2, false, {13330, 5}},
    {3333, 0, 2, false, {13330, 5}},
};

class PolarReader : public testing::Test {
  protected:
    int read(const ByteVector& bytes, int layout = 280, int skip = 1) {
        writeFile(path_, bytes);
        return polar_.ReadPolarData(path_.data(), records_, layout, skip);
    }

    /* Values of all fields and angles, one after the other. */
    std::vector<float> everything(const ByteVector& bytes, int layout, int skip = 1) {
        EXPECT_EQ(read(bytes, layout, skip), 1);
        const Cpluvek& first = records_[0];
        std::vector<float> all(first.angles, first.angles + 1 + first.nrays);
        for (int f = 0; f < first.nrecords; ++f) {
            const float* data = records_[f].data;
            all.insert(all.end(), data, data + first.nrays * first.ngates);
        }
        return all;
    }

    TempDir dir_;
    std::string path_ = dir_.file("scan.dat");
    CThuPolDaFor polar_;
    Cpluvek records_[8];
};

/* The gate is the last one of the second ray. */
TEST_F(PolarReader, EveryProductHasItsPacking) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(std::to_string(kind.product) + ", layout " + std::to_string(kind.layout));
        ByteVector gates(2 * kind.gateBytes, 0);
        gates.insert(gates.end(), kGate, kGate + kind.gateBytes);
        PolarBytes file(kind.product, 2, 3);
        file.ray(0, ByteVector(gates.size(), 0)).ray(900, gates);
        if (kind.hasLayer()) {
            file.append({0, 1, 2, 3, 4, 5});
        }
        ASSERT_EQ(read(file.bytes(), kind.layout), 1);
        ASSERT_EQ(records_[0].nrecords, static_cast<int>(kind.values.size()));
        EXPECT_FLOAT_EQ(records_[1].angles[2], static_cast<float>(9 * kPi / 180));
        for (std::size_t f = 0; f < kind.values.size(); ++f) {
            EXPECT_FLOAT_EQ(records_[f].data[5], kind.values[f]) << "field " << f;
        }
    }
}

TEST_F(PolarReader, TheClutterIndexIsATable) {
    const float indices[] = {0,     1.5f, 2,     2.5f, 2.75f, 3,    3.25f, 3.5f,
                             3.75f, 4,    4.25f, 4.5f, 5,     5.5f, 6,     7};
    ByteVector gates;
    for (int code = 0; code < 16; ++code) {
        const auto upper = static_cast<unsigned char>(code << 4);
        gates.insert(gates.end(), {0, upper, 0, 0});
    }
    ASSERT_EQ(read(PolarBytes(2122, 1, 16).ray(0, gates).bytes()), 1);
    for (int code = 0; code < 16; ++code) {
        EXPECT_EQ(records_[1].data[code], indices[code]);
    }
}

/* A file cut after n bytes, completed as its reader has to: every piece repeats the one before. */
ByteVector completed(const ByteVector& whole, const Kind& kind, std::size_t n, std::size_t nrays,
                     std::size_t ngates) {
    std::size_t at = 0;
    ByteVector out, header(320, 0), rayHeader(10, 0);
    ByteVector gates(kind.gateBytes * (kind.wholeRays ? ngates : 1), 0);
    const auto copy = [&](ByteVector& piece) {
        for (std::size_t i = 0; i < piece.size() && at + i < n; ++i) {
            piece[i] = whole[at + i];
        }
        at += piece.size();
        out.insert(out.end(), piece.begin(), piece.end());
    };
    copy(header);
    for (std::size_t r = 0; r < nrays; ++r) {
        copy(rayHeader);
        for (std::size_t g = 0; g < (kind.wholeRays ? 1 : ngates); ++g) {
            copy(gates);
        }
    }
    ByteVector layer(kind.hasLayer() ? nrays * ngates : 0, 0);
    copy(layer);
    return out;
}

TEST_F(PolarReader, AFileThatEndsEarlyRepeatsWhatWasThere) {
    std::mt19937 random(2);
    for (const Kind& kind : kKinds) {
        const ByteVector whole =
            randomPolarFile(kind.product, kind.gateBytes, kind.hasLayer(), 3, 4, random).bytes();
        for (std::size_t n = 278; n < whole.size(); n += 3) {
            const ByteVector cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n));
            ASSERT_TRUE(sameBits(everything(cut, kind.layout),
                                 everything(completed(whole, kind, n, 3, 4), kind.layout)))
                << kind.product << ", layout " << kind.layout << " cut at " << n;
        }
    }
}

/* Codes whose values are known by hand. */
TEST_F(PolarReader, KnownCodes) {
    const ByteVector gates = {
        0xFF, 0xFF, 0x00, 0xF8, 0x80, 0x80, 0x10, 0x27, 0x00, 0x08,  // saturated, middle codes
        0x40, 0x01, 0x00, 0x10, 0x00, 0x00, 0x60, 0xEA, 0x00, 0x00,  // 0 dBZ, lowest codes
    };
    ASSERT_EQ(read(PolarBytes(2213, 1, 2).ray(0, gates).bytes()), 1);
    const float expected[8][2] = {{-32, 0},     {0, -8},         {0, -180}, {0, 1},
                                  {0, -12.34f}, {1.5707964f, 0}, {7, 0},    {15, 1}};
    for (int f = 0; f < 8; ++f) {
        EXPECT_NEAR(records_[f].data[0], expected[f][0], 2e-5) << "field " << f;
        EXPECT_NEAR(records_[f].data[1], expected[f][1], 2e-5) << "field " << f;
    }
    // The clutter index of the word product knows no upper half of its table.
    ASSERT_EQ(read(PolarBytes(2111, 1, 3).ray(0, {0x40, 0x71, 0, 0x80, 0, 0xF0}).bytes()), 1);
    EXPECT_EQ(records_[0].data[0], 0.0f);
    EXPECT_EQ(records_[1].data[0], 3.5f);
    EXPECT_EQ(records_[1].data[1], 0.0f);
    EXPECT_EQ(records_[1].data[2], 0.0f);
}

TEST_F(PolarReader, HeaderGoesToEveryField) {
    PolarBytes file(2214, 2, 3);
    file.set(52, 1).set(54, 30).set(56, 36).set(58, 51).set(60, 15).set(62, 18);
    file.set(66, 5816).set(68, 1582).set(70, 140).set(84, 655).set(88, 32).set(92, 900);
    file.set(118, 150).set(122, 9).set(262, 900).set(274, 15);
    file.ray(9000, ByteVector(24, 7)).ray(-100, ByteVector(24, 9));
    ASSERT_EQ(read(file.bytes()), 1);
    EXPECT_EQ(records_[0].gridxy[0], 581600.0f);
    EXPECT_EQ(records_[0].gridxy[1], 158200.0f);
    EXPECT_EQ(records_[1].gridxy[0], -1.0f);
    const char* const names[] = {"Zh", "LDR", "V", "W", "Abs Phase_V", "CI", "SQI"};
    const float nyquist = 12.34f;
    const float shown[][2] = {
        {0, 60}, {-40, 0}, {-nyquist, nyquist}, {0, nyquist / 2}, {-3.1415999f, 3.1415999f},
        {0, 7},  {0, 1}};
    for (int f = 0; f < 7; ++f) {
        SCOPED_TRACE(f);
        const Cpluvek& r = records_[f];
        EXPECT_FLOAT_EQ(r.longitude, 1.51f);
        EXPECT_FLOAT_EQ(r.latitude, 51.255f);
        EXPECT_EQ(r.altitude, 140.0f);
        EXPECT_EQ(r.radarconst, 65.5f);
        EXPECT_FLOAT_EQ(r.wavelength, 0.032f);
        EXPECT_EQ(r.beamwidth, 0.017453292f) << "one degree, whatever the file says";
        EXPECT_EQ(r.gatesize, 300.0f);
        EXPECT_EQ(r.pulsedepth, 150.0f);
        EXPECT_EQ(r.rpm, 10.0f);
        EXPECT_EQ(r.prf, 900.0f);
        EXPECT_EQ(r.nsamples, 60.0f / 10 / 2 * 900) << "not the word of the file";
        EXPECT_EQ(r.nyquist, nyquist);
        EXPECT_EQ(r.firstgate, 3);
        EXPECT_EQ(r.radarid, 2214);
        EXPECT_EQ(r.nrecords, 7);
        EXPECT_EQ(r.recindex, f);
        EXPECT_EQ(r.coordtype, 0);
        EXPECT_EQ(r.valid, 1);
        EXPECT_EQ(r.colormap, 7);
        EXPECT_EQ(r.colorflag, 255);
        EXPECT_EQ(r.axislimits[0], -900.0f);
        EXPECT_EQ(r.axislimits0[5], 450.0f);
        EXPECT_STREQ(r.name, names[f]);
        EXPECT_STREQ(r.datetime, "10/08/2007 18:20:05");
        EXPECT_EQ(r.title, std::string(names[f]) + ", 10/08/2007 18:20:05, 1.50deg");
        EXPECT_STREQ(r.ylabel, "Range [km]");
        EXPECT_EQ(r.displaymin, shown[f][0]);
        EXPECT_EQ(r.displaymax, shown[f][1]);
        EXPECT_FLOAT_EQ(r.angles[0], static_cast<float>(1.5 * kPi / 180));
        EXPECT_FLOAT_EQ(r.angles[1], static_cast<float>(kPi / 2));
        EXPECT_FLOAT_EQ(r.angles[2], static_cast<float>(-kPi / 180)) << "stays negative";
    }
    EXPECT_STREQ(records_[5].units, "- ");
}

/* Names, units and display ends of every product, as displays know them. */
TEST_F(PolarReader, ProductsHaveTheirOwnSpellings) {
    struct Row {
        int product;
        const char* text;
    };
    const Row rows[] = {
        {2111, "Zv[dBZ]0:60  [ ]-1:1 "},
        {2122, "Zv[dBZ]0:50 CI[ ]0:7 V[m/s]-5:5 SQI[ ]0:1 "},
        {2141, "Zv[dBZ]0:50 CI[ ]0:7 Abs Phase_V[rad]0:6 std(abs_Phase)[dB]-40:0 "},
        {2211,
         "Zh[dBZ]0:60 Zdr[dB ]-8:5 Phidp[deg]-30:180 RhoHV[   ]0.5:1 V[m/s]-5:5 W[m/s]0:2.5 "
         "   [   ]0:1 "},
        {2212,
         "Zh[dBZ]0:60 LDR[dB ]-40:0 V[m/s]-12.34:12.34 W[m/s]0:6.17 "
         "Abs_phase_V[rad]-3.1416:3.1416 "},
        {2213,
         "Zh[dBZ]0:60 Zdr[dB ]-8:5 Phidp[deg]-30:180 RhoHV[   ]0.5:1 V[m/s]-5:5 W[m/s]0:2.5 "
         "CI[dB]0:7 SQI[-]0:15 "},
        {1814, " [ ]0:1  [ ]0:1 "},
    };
    for (const Row& row : rows) {
        ASSERT_EQ(read(PolarBytes(row.product, 1, 1).bytes()), 1);
        std::string text;
        for (int f = 0; f < records_[0].nrecords; ++f) {
            char part[100];
            std::snprintf(part, sizeof part, "%s[%s]%g:%g ", records_[f].name, records_[f].units,
                          records_[f].displaymin, records_[f].displaymax);
            text += part;
        }
        EXPECT_EQ(text, row.text);
    }
}

TEST_F(PolarReader, CountsAnglesAndElevations) {
    EXPECT_EQ(read(PolarBytes(2122, 9, 9).set(258, 2).set(260, 1).text(0, "ARFD").bytes()), 1);
    EXPECT_EQ(records_[0].nrays, 2);
    EXPECT_EQ(records_[3].ngates, 1);
    EXPECT_EQ(read(PolarBytes(2122, 2, 3).set(258, 5).bytes()), 1) << "one override is ignored";
    EXPECT_EQ(records_[0].nrays, 2);

    PolarBytes file(2122, 3, 1);
    file.ray(36000, ByteVector(4), 10).ray(35000, ByteVector(4), 20).ray(36001, ByteVector(4), 35);
    ASSERT_EQ(read(file.bytes()), 1);
    EXPECT_EQ(records_[2].angles[1], 0.0f);
    EXPECT_FLOAT_EQ(records_[2].angles[2], static_cast<float>(350 * kPi / 180));
    EXPECT_FLOAT_EQ(records_[2].angles[3], static_cast<float>(-295.35 * kPi / 180));
    EXPECT_FLOAT_EQ(records_[2].angles[0], static_cast<float>(3.5 * kPi / 180)) << "the last ray's";

    const double degrees[][2] = {{0, 0.5}, {3, 2.5}, {4, 0.5}, {-1, 0.5}, {1, 1.0}};
    for (const auto& row : degrees) {
        ASSERT_EQ(read(PolarBytes(2111).set(276, static_cast<int>(row[0])).bytes()), 1);
        EXPECT_FLOAT_EQ(records_[0].angles[0], static_cast<float>(row[1] * kPi / 180)) << row[0];
    }
    ASSERT_EQ(read(PolarBytes(2214).set(116, 0).set(262, 900).bytes()), 1);
    EXPECT_EQ(records_[0].firstgate, 0) << "no gate length";
}

TEST_F(PolarReader, RefusalsLeaveTheRecordsAlone) {
    struct Row {
        const char* what;
        ByteVector bytes;
        int result;
        const char* message;
    };
    const char* empty =
        "the number of rays or gates should be bigger than 0!  (nrays=0, ngates=100)\n";
    const Row rows[] = {
        {"no rays", PolarBytes(2213, 0, 100).bytes(), -1, empty},
        {"magic", PolarBytes(2213).text(0, "RADE").bytes(), -1, ""},
        {"magic cut", ByteVector{'R', 'A', 'D'}, -1, ""},
        {"product", PolarBytes(2215).bytes(), -2, ""},
        {"product cut off", ByteVector{'R', 'A', 'D', 'F'}, -2, ""},
        {"claims far too much", PolarBytes(2213, 3000, 3000).bytes(), -1, ""},
        {"claims far too much of an unknown layout", PolarBytes(2211, 30000, 30000).bytes(), -1,
         ""},
    };
    ASSERT_EQ(read(PolarBytes(2213, 1, 1).ray(0, ByteVector(10, 1)).bytes()), 1);
    const float* before = records_[0].data;
    for (const Row& row : rows) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(read(row.bytes, 300), row.result) << row.what;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.message) << row.what;
        EXPECT_EQ(records_[0].data, before) << row.what;
        EXPECT_EQ(records_[0].nrecords, 8);
    }
    std::string missing = dir_.file("missing");
    EXPECT_EQ(polar_.ReadPolarData(missing.data(), records_, 252, 1), 0);
}

/* A file that ends early may declare 2^18 values, or 64 for each byte that it does hold. */
TEST_F(PolarReader, ShortFilesDeclareNoMoreThanTheyJustify) {
    struct Row {
        int product, nrays, ngates;
        std::size_t bytes;
        int result;
    };
    const Row rows[] = {{2213, 256, 128, 330, 1},      {2213, 257, 128, 330, -1},
                        {2213, 2048, 2048, 330, -1},   {2211, 1000, 1000, 109374, -1},
                        {2211, 1000, 1000, 109375, 1}, {1115, 512, 256, 330, 1},
                        {1115, 513, 256, 330, -1}};
    for (const Row& row : rows) {
        ByteVector bytes = PolarBytes(row.product, row.nrays, row.ngates).bytes();
        bytes.resize(row.bytes);
        for (const int layout : {260, 300}) {
            EXPECT_EQ(read(bytes, layout), row.result)
                << row.product << ": " << row.nrays << " x " << row.ngates;
        }
    }
}

/* 30 rays: phase 45 degrees and high correlation, so that an offset is found and removed. */
TEST_F(PolarReader, PhaseOffsetIsRemovedAndWeakEchoesAreBlanked) {
    const int ngates = 40;
    // 8 dBZ: weak past the range where 20 log10(r) is above 8 + 40 - 26.
    ByteVector gates;
    for (int g = 0; g < ngates; ++g) {
        const unsigned char gate[10] = {0x90, 0x51, 0, 0x88, 9, 0x80, 0x60, 0xEA, 0, 0x0A};
        gates.insert(gates.end(), gate, gate + 10);
    }
    PolarBytes file(2213, 3, ngates);
    file.set(84, 400).set(116, 1000);
    for (int r = 0; r < 3; ++r) {
        file.ray(r, gates);
    }
    ASSERT_EQ(read(file.bytes(), 280, 0), 1);
    for (int g = 0; g < ngates; ++g) {
        const double rangeKm = g == 0 ? 1 : g;
        const bool weak = 26.0f > static_cast<float>(8 - 20 * std::log10(rangeKm) + 40);
        EXPECT_EQ(weak, g > 12);
        const float* data = records_[2].data + ngates + g;
        EXPECT_NEAR(*data, weak ? -999.0f : 0.0f, 1e-4) << g;
        for (int f = 0; f < 6; ++f) {
            EXPECT_EQ(records_[f].data[g] == -999.0f, weak) << f;
        }
        EXPECT_EQ(records_[6].data[g], 3.0f) << "the clutter index stays";
        EXPECT_EQ(records_[7].data[g], 8.0f) << "the signal quality stays";
    }
    polar_.signalthreshold = -100.0f;
    ASSERT_EQ(read(file.bytes(), 280, 0), 1);
    EXPECT_NEAR(records_[0].data[ngates - 1], 8.0f, 1e-5) << "nothing is that weak";
    ASSERT_EQ(read(file.bytes(), 280, 1), 1);
    EXPECT_NEAR(records_[2].data[0], 45.0f, 1e-4) << "not corrected";
}

/* Products with other fields in the positions of phase and correlation are not corrected. */
TEST_F(PolarReader, OnlyTwoProductsAreCorrected) {
    std::mt19937 random(3);
    for (const Kind& kind : kKinds) {
        const bool corrected = kind.product == 2211 || kind.product == 2213;
        const ByteVector bytes =
            randomPolarFile(kind.product, kind.gateBytes, kind.hasLayer(), 2, 30, random).bytes();
        EXPECT_EQ(sameBits(everything(bytes, kind.layout, 0), everything(bytes, kind.layout, 1)),
                  !corrected)
            << kind.product << ", layout " << kind.layout;
    }
}

TEST_F(PolarReader, RaysAreSortedByAzimuthInEveryField) {
    PolarBytes file(2122, 3, 2);
    for (const int azimuth : {20000, -500, 3000}) {
        const auto mark = static_cast<unsigned char>(azimuth / 1000 + 100);
        file.ray(azimuth, {mark, 1, mark, 2, mark, 1, mark, 2});
    }
    ASSERT_EQ(read(file.bytes()), 1);
    const float first = records_[2].data[0], second = records_[2].data[2],
                third = records_[2].data[4], elevation = records_[3].angles[0];
    polar_.SortPolarDataRays(records_);
    EXPECT_EQ(records_[2].data[0], second);
    EXPECT_EQ(records_[2].data[2], third);
    EXPECT_EQ(records_[2].data[5], first);
    EXPECT_EQ(records_[3].angles[0], elevation);
    EXPECT_LT(records_[3].angles[1], records_[3].angles[2]);
    EXPECT_LT(records_[3].angles[2], records_[3].angles[3]);
    records_[0].coordtype = 2;
    std::swap(records_[0].angles[1], records_[0].angles[2]);
    polar_.SortPolarDataRays(records_);
    EXPECT_GT(records_[0].angles[1], records_[0].angles[2]) << "no rays on a grid";
    polar_.SortPolarDataRays(nullptr);
    polar_.FillingFields(nullptr);
}

}  // namespace

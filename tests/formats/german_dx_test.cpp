/* German DX files made byte by byte: header, rays, faults, conversion. */
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numbers>
#include <string>

#include "clutterclassifier/CGermanRadar.h"
#include "formats/german_dx_bytes.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr const char* kNoRay = "\tError when searching for new ray\n";

class GermanDx : public testing::Test {
  protected:
    int read(const ByteVector& bytes) {
        writeFile(path_, bytes);
        testing::internal::CaptureStdout();
        const int result = radar_->readbinaryfile(path_.data());
        message_ = testing::internal::GetCapturedStdout();
        EXPECT_EQ(radar_->loaded, result);
        return result;
    }
    double bin(int ray, int b) const { return radar_->reflectivity[ray * 128 + b]; }

    TempDir dir_;
    std::string path_ = dir_.file("scan.bin"), message_;
    std::unique_ptr<CGermanRadar> radar_ = std::make_unique<CGermanRadar>();
};

TEST_F(GermanDx, ReadsBothWidths) {
    EXPECT_EQ(radar_->bins, 128);
    EXPECT_EQ(radar_->azimuth[359], 359.0);
    EXPECT_EQ(bin(359, 127), 0.0);
    for (const int bins : {100, 128}) {
        ASSERT_EQ(read(dxFile(bins)), 1);
        EXPECT_EQ(message_, "");
        EXPECT_EQ(radar_->bins, bins);
        for (const int r : {0, 1, 200, 359}) {
            EXPECT_DOUBLE_EQ(radar_->azimuth[r], r);
            EXPECT_DOUBLE_EQ(radar_->elevation[r], r % 7 * 0.1);
            EXPECT_EQ(bin(r, 0), (r % 200 + 1) * 0.5 - 32.5);
            EXPECT_EQ(bin(r, 1), -29.0);
            for (int b = 2; b < bins - 1; ++b) {
                EXPECT_EQ(bin(r, b), -32.5);
            }
            EXPECT_EQ(bin(r, bins - 1), -28.0) << "after a run";
        }
    }
    EXPECT_EQ(radar_->year, 2008);
    EXPECT_EQ(radar_->month, 6);
    EXPECT_EQ(radar_->day, 2);
    EXPECT_EQ(radar_->hour, 16);
    EXPECT_EQ(radar_->minute, 55);
    EXPECT_EQ(radar_->second, 0);
    std::string missing = dir_.file("missing");
    EXPECT_EQ(radar_->readbinaryfile(missing.data()), 0);
    EXPECT_EQ(radar_->loaded, 0) << "what was loaded no longer counts";
}

TEST_F(GermanDx, EveryTokenIsAskedFor) {
    const ByteVector sound = dxFile(128);
    for (const char* token : {"DX", "BY", "VS", "CO", "CD", "CS", "EP", "MS"}) {
        ByteVector bytes = sound;
        const auto found = std::search(bytes.begin(), bytes.end(), token, token + 2);
        ASSERT_NE(found, bytes.end());
        *found = 'x';
        EXPECT_EQ(read(bytes), 0) << token;
        EXPECT_EQ(message_, "");
    }
}

TEST_F(GermanDx, AMessageBeyondTheEndLeavesNoRay) {
    for (const char* message : {"999short", "006short", "005short", "12", ""}) {
        EXPECT_EQ(read(dxStart(dxHeader(message), 0)), 0) << message;
        EXPECT_EQ(message_, kNoRay) << message;
    }
}

TEST_F(GermanDx, MessageLengthsAndFillers) {
    struct Row {
        const char* message;
        int fillers;
    };
    for (const Row& row : {Row{"000", 0}, Row{"abc", 2}, Row{"  3xyz", 5}, Row{" 1 x", 1}}) {
        ByteVector bytes = dxStart(dxHeader(row.message), row.fillers);
        const ByteVector rays = dxFile(100);
        const ByteVector start = dxStart();
        bytes.insert(bytes.end(), rays.begin() + static_cast<std::ptrdiff_t>(start.size()),
                     rays.end());
        EXPECT_EQ(read(bytes), 1) << row.message;
        EXPECT_EQ(bin(359, 99), -28.0);
    }
}

TEST_F(GermanDx, OtherCountsOfBinsEndAfterTheFirstAngles) {
    struct Row {
        const char* what;
        ByteVector pairs;
    };
    ByteVector zeroEnds;
    for (int b = 0; b < 99; ++b) {
        zeroEnds.insert(zeroEnds.end(), {5, 0});
    }
    zeroEnds.insert(zeroEnds.end(), {0, 0, 5, 0});
    const Row rows[] = {{"120 bins", {120, 16}},
                        {"a value of 0 ends the count", zeroEnds},
                        {"the next marker", {30, 0, 5, 0x20, 99, 16}},
                        {"none", {}},
                        {"too many", {200, 16, 200, 16}}};
    for (const Row& row : rows) {
        radar_ = std::make_unique<CGermanRadar>();
        ByteVector bytes = dxStart();
        appendDxRay(bytes, 123, 45, row.pairs);
        appendDxRay(bytes, 456, 78, {});
        EXPECT_EQ(read(bytes), 1) << row.what;
        EXPECT_EQ(message_, "");
        EXPECT_EQ(radar_->bins, 128);
        EXPECT_DOUBLE_EQ(radar_->azimuth[0], 12.3);
        EXPECT_DOUBLE_EQ(radar_->elevation[0], 4.5);
        EXPECT_EQ(radar_->azimuth[1], 1.0) << "untouched";
        EXPECT_EQ(bin(0, 0), 0.0) << "untouched";
    }
}

TEST_F(GermanDx, MissingAndCutRaysAreAFault) {
    const ByteVector sound = dxFile(128);
    for (const std::size_t cut : {1u, 2u, 6u, 9u, 12u, 13u}) {
        EXPECT_EQ(read(ByteVector(sound.begin(), sound.end() - static_cast<std::ptrdiff_t>(cut))),
                  cut == 1 ? 1 : 0)
            << cut;
        EXPECT_EQ(message_, cut == 1 ? "" : kNoRay) << cut;
    }
    EXPECT_EQ(read(dxFile(128, 359)), 0);
    EXPECT_EQ(message_, kNoRay);
    EXPECT_EQ(read(dxStart()), 0) << "no ray at all";
    EXPECT_EQ(message_, kNoRay);
    // A run past the last bin ends the ray, and the next one is found.
    ByteVector bytes = dxStart();
    for (int r = 0; r < 360; ++r) {
        appendDxRay(bytes, r, 0, r == 0 ? ByteVector{100, 16} : ByteVector{99, 16, 255, 16});
    }
    EXPECT_EQ(read(bytes), 1);
    EXPECT_EQ(bin(359, 99), -32.5);
}

TEST_F(GermanDx, WordsAreUnsigned) {
    ByteVector bytes = dxStart();
    for (int r = 0; r < 360; ++r) {
        appendDxRay(bytes, 65535, 40000, {100, 16});
    }
    ASSERT_EQ(read(bytes), 1);
    EXPECT_DOUBLE_EQ(radar_->azimuth[7], 6553.5);
    EXPECT_DOUBLE_EQ(radar_->elevation[7], 4000.0);
}

TEST_F(GermanDx, BecomesTwoRecords) {
    Cpluvek records[2];
    radar_->german2pluvek(records);
    EXPECT_EQ(records[0].data, nullptr) << "nothing was read yet";
    ASSERT_EQ(read(dxFile(100)), 1);
    records[0].data = new float[3];
    records[0].latitude = 5.0f;
    radar_->german2pluvek(nullptr);
    radar_->german2pluvek(records);
    radar_->german2pluvek(records);
    const float degree = static_cast<float>(std::numbers::pi / 180);
    for (int k = 0; k < 2; ++k) {
        const Cpluvek& r = records[k];
        EXPECT_EQ(r.nrays, 360);
        EXPECT_EQ(r.ngates, 100);
        EXPECT_EQ(r.nrecords, 2);
        EXPECT_EQ(r.recindex, k);
        EXPECT_EQ(r.coordtype, 0);
        EXPECT_EQ(r.firstgate, 0);
        EXPECT_EQ(r.gatesize, 1000.0f);
        EXPECT_EQ(r.beamwidth, 0.019198622f);
        EXPECT_EQ(r.latitude, 0.0f);
        EXPECT_EQ(r.colorflag, 255);
        EXPECT_EQ(r.colormap, 7);
        EXPECT_EQ(r.axislimits[3], -100000.0f);
        EXPECT_EQ(r.axislimits0[2], 40000.0f);
        EXPECT_STREQ(r.title, "DATA FILE, 02/06/2008 16:55:00");
        EXPECT_STREQ(r.xlabel, "Range [km]");
        EXPECT_NEAR(r.angles[360], 359 * degree, 1e-5);
        EXPECT_NEAR(r.angles[0], 0.0f, 1e-7);
    }
    EXPECT_EQ(records[0].data[35900], static_cast<float>((359 % 200 + 1) * 0.5 - 32.5));
    EXPECT_EQ(records[0].data[35999], -28.0f);
    EXPECT_EQ(records[1].data[35900], static_cast<float>(359 % 7 / 10.0));
    EXPECT_EQ(records[1].data[35999], static_cast<float>(359 % 7 / 10.0));
    EXPECT_STREQ(records[0].name, "Z");
    EXPECT_STREQ(records[1].units, "Deg");
    EXPECT_EQ(records[0].displaymin, -10.0f);
    EXPECT_EQ(records[1].displaymax, 5.0f);
}

TEST_F(GermanDx, AMeasuredScanIsPlausible) {
    const std::string dir = measuredDataDir();
    std::string file = dir + "/dx_10908_20080602_1655.bin";
    if (dir.empty() || readFile(file).empty()) {
        GTEST_SKIP() << "no measured file";
    }
    ASSERT_EQ(radar_->readbinaryfile(file.data()), 1);
    EXPECT_EQ(radar_->bins, 128);
    EXPECT_EQ(radar_->minute, 55);
    for (int r = 0; r < 360; ++r) {
        EXPECT_NEAR(radar_->azimuth[r], r, 0.5);
    }
    const double* z = radar_->reflectivity;
    EXPECT_EQ(*std::max_element(z, z + 360 * 128), 57.5);
    const auto echoes = std::count_if(z, z + 360 * 128, [](double v) { return v > 0; });
    EXPECT_GT(echoes, 5000);
    EXPECT_LT(echoes, 40000);
}

}  // namespace

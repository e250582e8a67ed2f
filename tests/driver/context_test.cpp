/* The processing context: its defaults, its memory, and operations on its records. */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "clutterclassifier/Cvars.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

void fill(Cpluvek& record, int ngates, int nrays, const std::vector<float>& values) {
    delete[] record.data;
    delete[] record.angles;
    record.ngates = ngates;
    record.nrays = nrays;
    record.gatesize = 1000.0f;
    record.data = new float[values.size()];
    std::copy(values.begin(), values.end(), record.data);
    record.angles = new float[static_cast<std::size_t>(nrays) + 1]();
}

std::vector<float> valuesOf(const Cpluvek& record) {
    return {record.data, record.data + record.ngates * record.nrays};
}

std::vector<Cpluvek*> recordsOf(Crres& c) {
    return {&c.zhh,  &c.zdr,    &c.pdp, &c.rhv,  &c.vel,   &c.wid,   &c.ldr,   &c.kdp,
            &c.rain, &c.spare1, &c.snr, &c.dpdp, &c.acoef, &c.bcoef, &c.alpha, &c.ta,
            &c.pdpc, &c.ah,     &c.pdf, &c.fzl,  &c.ccl,   &c.spare2};
}

TEST(Context, DefaultSettings) {
    Crres c;
    EXPECT_EQ(c.clutteralg, 255);
    EXPECT_EQ(c.gates2ave_pdp, 17);
    EXPECT_EQ(c.rays2ave_zhh, 1);
    EXPECT_EQ(c.unusedsetting, 280);
    EXPECT_STREQ(c.mfdir, "");
    EXPECT_STREQ(c.vprfile, "");
    EXPECT_EQ(c.invalidvalue, -999.0f);
    EXPECT_EQ(c.freezinglevel, 3000.0f);
    EXPECT_EQ(c.texgates, 5);
    EXPECT_EQ(c.texrays, 3);
    EXPECT_EQ(c.minsnr, 26.0f);
    EXPECT_EQ(c.minphaserise, 20.0);
    EXPECT_EQ(c.radarpro.threshold, -32.0f);
    EXPECT_EQ(c.radarpro.coefficients[2][0], 49.2144);
    EXPECT_EQ(c.radarpro.coefficients[4][3], 2.1542);
    EXPECT_EQ(c.radarpro.coefficients[4][4], 0.0);
    EXPECT_EQ(c.radarpro.coefficients[19][9], 0.0);
}

TEST(Context, ClearMemoryKeepsWhatTheNextProducerFrees) {
    Crres c;
    for (Cpluvek* record : recordsOf(c)) {
        fill(*record, 1, 1, {1.0f});
    }
    c.minsnr = 3.0f;
    c.ClearMemory();
    for (Cpluvek* record : recordsOf(c)) {
        EXPECT_EQ(record->data != nullptr, record == &c.ah);
        EXPECT_EQ(record->angles != nullptr,
                  record == &c.ah || record == &c.snr || record == &c.ta);
    }
    EXPECT_EQ(c.minsnr, 3.0f);
}

/* Hosts that end an object in place look at its pointers afterwards. */
TEST(Context, WhatWasDestroyedHoldsNoPointers) {
    alignas(Cpluvek) unsigned char record[sizeof(Cpluvek)];
    auto* const field = new (record) Cpluvek;
    fill(*field, 2, 1, {1.0f, 2.0f});
    const auto at = [](const auto* object, const auto* member) {
        return reinterpret_cast<const unsigned char*>(member) -
               reinterpret_cast<const unsigned char*>(object);
    };
    const auto data = at(field, &field->data), angles = at(field, &field->angles);
    field->~Cpluvek();
    const unsigned char null[sizeof(void*)] = {};
    EXPECT_EQ(std::memcmp(record + data, null, sizeof null), 0);
    EXPECT_EQ(std::memcmp(record + angles, null, sizeof null), 0);

    alignas(Cvars) unsigned char variable[sizeof(Cvars)];
    auto* const speed = new (variable) Cvars;
    speed->CreateMFSspace(2);
    const auto functions = at(speed, &speed->mfs);
    speed->~Cvars();
    EXPECT_EQ(std::memcmp(variable + functions, null, sizeof null), 0);
}

TEST(Context, NoEchoFlags) {
    Crres c;
    c.FlagNoEchoConditions();
    c.UnFlagNoEchoConditions();
    fill(c.zhh, 5, 1, {-1.0f, 0.0f, 1.0f, kNan, -1.0f});
    fill(c.ccl, 5, 1, {0.0f, 0.0f, 0.0f, 0.0f, 5.0f});
    c.FlagNoEchoConditions();
    EXPECT_EQ(valuesOf(c.ccl), (std::vector<float>{3, 3, 0, 0, 5}));
    c.UnFlagNoEchoConditions();
    EXPECT_EQ(valuesOf(c.ccl), (std::vector<float>{0, 0, 0, 0, 5}));
    fill(c.ccl, 4, 1, {0, 0, 0, 0});
    c.FlagNoEchoConditions();
    EXPECT_EQ(valuesOf(c.ccl), (std::vector<float>{0, 0, 0, 0})) << "smaller than the scan: absent";
}

TEST(Context, InvalidDataAreHiddenWhereTheClassIsNotPrecipitation) {
    Crres c;
    fill(c.ccl, 4, 1, {0.0f, 3.0f, kNan, -0.0f});
    for (Cpluvek* record : recordsOf(c)) {
        if (record != &c.ccl && record != &c.wid) {
            fill(*record, 4, 1, {1, 2, 3, 4});
        }
    }
    fill(c.ldr, 3, 1, {1, 2, 3});
    c.EliminateInvalidDataForDisplayPurposes();
    for (Cpluvek* record : {&c.zhh, &c.zdr, &c.pdp, &c.rhv, &c.vel, &c.rain}) {
        EXPECT_EQ(valuesOf(*record), (std::vector<float>{1, -999, -999, 4}));
    }
    for (Cpluvek* record : {&c.kdp, &c.snr, &c.pdf}) {
        EXPECT_EQ(valuesOf(*record), (std::vector<float>{1, 2, 3, 4}));
    }
    EXPECT_EQ(valuesOf(c.ldr), (std::vector<float>{1, 2, 3}));
}

TEST(Stage, NamesItsRecordsAndKeepsTheScansDescription) {
    Crres c;
    c.PrecipitationClutterClassification(255);
    c.computeSNR();
    EXPECT_EQ(c.ccl.data, nullptr);
    EXPECT_EQ(c.classifyNoisewithSNR(), 0);
    fill(c.zhh, 3, 1, {30.0f, 10.0f, kNan});
    c.zhh.nrecords = 4;
    c.zhh.radarconst = 6.0f;
    c.PrecipitationClutterClassification(0);
    EXPECT_STREQ(c.ccl.name, "CCl");
    EXPECT_STREQ(c.ccl.units, "-");
    EXPECT_EQ(c.ccl.nrecords, 1);
    EXPECT_EQ(c.ccl.nsets, 4);
    EXPECT_STREQ(c.snr.name, "SNR");
    EXPECT_STREQ(c.snr.units, "dB");
    EXPECT_EQ(c.snr.data[0], 36.0f);
    EXPECT_EQ(c.snr.data[1], 16.0f);
    EXPECT_EQ(valuesOf(c.ccl), (std::vector<float>{0, 3, 0})) << "a NaN ratio is not noise";
}

TEST(Stage, RatioIsFormedInSinglePrecisionFromTheLeft) {
    Crres c;
    std::vector<float> z;
    for (int g = 0; g < 400; ++g) {
        z.push_back(0.37f * static_cast<float>(g % 90) - 11.3f);
    }
    fill(c.zhh, 400, 1, z);
    c.zhh.gatesize = 137.0f;
    c.zhh.radarconst = 43.21f;
    c.computeSNR();
    for (int g = 0; g < 400; ++g) {
        const float km = static_cast<float>(g > 0 ? g : 1) * 137.0f / 1000.0f;
        const float loss = static_cast<float>(20.0 * std::log10(static_cast<double>(km)));
        const float left = z[static_cast<std::size_t>(g)] - loss;
        EXPECT_EQ(c.snr.data[g], left + 43.21f) << g;
    }
}

TEST(Stage, RecordsSmallerThanTheScanAreAbsent) {
    Crres c;
    clutter::test::TempDir empty;
    std::snprintf(c.mfdir, sizeof c.mfdir, "%s/", empty.path().c_str());
    fill(c.zhh, 3, 1, {90.0f, 90.0f, 90.0f});
    fill(c.vel, 2, 1, {0.0f, 0.0f});
    testing::internal::CaptureStdout();
    c.PrecipitationClutterClassification(16);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "no input, so no file is looked for";
    fill(c.vel, 3, 2, std::vector<float>(6, 0.0f));
    testing::internal::CaptureStdout();
    c.PrecipitationClutterClassification(16);
    EXPECT_NE(testing::internal::GetCapturedStdout(), "") << "a larger one is used";
    fill(c.snr, 1, 1, {0.0f});
    EXPECT_EQ(c.classifyNoisewithSNR(), 0);
}

TEST(Stage, WindowThatTheTextureRejectsGivesTexturesOfZero) {
    Crres c;
    clutter::test::TempDir tables;
    std::snprintf(c.mfdir, sizeof c.mfdir, "%s/", tables.path().c_str());
    clutter::test::writeText(tables.file("cal_mf_sZhh_clutter.dat"), "0 0.9 1 0.1");
    clutter::test::writeText(tables.file("cal_mf_sZhh_precipi.dat"), "0 0.1 1 0.9");
    std::vector<float> z;
    for (int i = 0; i < 70; ++i) {
        z.push_back(i % 2 == 0 ? 80.0f : 90.0f);
    }
    fill(c.zhh, 7, 10, z);
    c.PrecipitationClutterClassification(1);
    EXPECT_EQ(valuesOf(c.ccl), std::vector<float>(70, 0.0f));
    c.texgates = 4;
    c.PrecipitationClutterClassification(1);
    EXPECT_EQ(valuesOf(c.ccl), std::vector<float>(70, 5.0f));
}

TEST(RemoveIsolatedPixels, LonePrecipitationBecomesClutter) {
    Crres c;
    c.RemoveIsolatedPixels();
    const int ngates = 40, nrays = 40;
    std::vector<float> cls(ngates * nrays, 5.0f);
    const auto at = [&cls](int g, int r) -> float& {
        return cls[static_cast<std::size_t>(r * ngates + g)];
    };
    at(5, 5) = 0.0f;                 // alone
    at(20, 20) = at(22, 20) = 0.0f;  // two in a window
    at(30, 10) = at(34, 10) = 0.0f;  // alone in 5 x 5
    for (int g = 8; g < 14; ++g) {
        at(g, 30) = 0.0f;  // a cell
    }
    at(39, 35) = 3.0f;
    fill(c.zhh, ngates, nrays, cls);
    fill(c.ccl, ngates, nrays, cls);
    c.RemoveIsolatedPixels();
    at(5, 5) = at(20, 20) = at(22, 20) = at(30, 10) = at(34, 10) = 5.0f;
    EXPECT_EQ(valuesOf(c.ccl), cls);
}

TEST(Locations, PairsOfTokens) {
    Crres c;
    clutter::test::TempDir directory;
    std::string path = directory.file("points");
    float *ranges = nullptr, *angles = nullptr;
    int n = -3;
    c.ReadRangeAngleLocations(path.data(), &ranges, &angles, n);
    clutter::test::writeText(path, " 12 ");
    c.ReadRangeAngleLocations(path.data(), &ranges, &angles, n);
    EXPECT_EQ(n, -3);
    EXPECT_EQ(ranges, nullptr);
    clutter::test::writeText(path, "1000 0.5\n" + std::string(3000, '0') + "2.5 x\r\n7");
    c.ReadRangeAngleLocations(path.data(), &ranges, &angles, n);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(ranges[0], 1000.0f);
    EXPECT_EQ(angles[0], 0.5f);
    EXPECT_EQ(ranges[1], 2.5f);
    EXPECT_EQ(angles[1], 0.0f);
    delete[] ranges;
    delete[] angles;
}

}  // namespace

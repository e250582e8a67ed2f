/* Universal Format rays from field records and back. */
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cufrw.h"
#include "formats/uf_bytes.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNoRain = -32.0f;

std::unique_ptr<Cpluvek[]> makeRecords(const std::vector<std::string>& names, int nrays,
                                       int ngates) {
    std::unique_ptr<Cpluvek[]> records(new Cpluvek[names.size()]);
    for (std::size_t i = 0; i < names.size(); ++i) {
        Cpluvek& r = records[i];
        std::strcpy(r.name, names[i].c_str());
        r.nrecords = static_cast<int>(names.size());
        r.nrays = nrays;
        r.ngates = ngates;
        r.firstgate = 17;
        r.gatesize = 120.0f;
        r.angles = new float[nrays + 1]();
        r.data = new float[nrays * ngates]();
    }
    return records;
}

/* The words of one field of one ray. */
std::vector<int> words(const Cufrw& uf, int ray, int field) {
    const Cufray& r = uf.rays[ray];
    return std::vector<int>(r.data + field * r.ngates, r.data + (field + 1) * r.ngates);
}

TEST(ToUniversalFormat, ValuesAreHundredfoldTruncatedAndWrapped) {
    const std::pair<float, int> cases[] = {{1.239f, 123},    {-1.239f, -123},   {0.009f, 0},
                                           {327.67f, 32767}, {327.68f, -32768}, {-999.0f, 31172},
                                           {655.36f, 0},     {1e30f, 0},        {kNan, 0},
                                           {kInf, 0},        {-kInf, 0},        {3e38f, 0}};
    const int n = std::size(cases);
    auto record = makeRecords({"Zh"}, 1, n);
    for (int g = 0; g < n; ++g) {
        record[0].data[g] = cases[g].first;
    }
    Cufrw uf;
    ASSERT_EQ(uf.pluvek2uf(record.get()), 1);
    for (int g = 0; g < n; ++g) {
        EXPECT_EQ(uf.rays[0].data[g], cases[g].second) << cases[g].first;
    }
}

TEST(ToUniversalFormat, NamesBecomeTwoLetters) {
    const std::vector<std::pair<std::string, std::string>> names = {
        {"Zh", "DZ"},  {"Zdr", "DR"}, {"Phidp", "PH"}, {"RhoHV", "RH"}, {"W", "SW"},
        {"V", "VR"},   {"Zv", "DZ"},  {"Ci", "CI"},    {"SQI", "SQ"},   {"KDP", "KD"},
        {"LDR", "LD"}, {"CI", "UN"},  {"DZ", "UN"},    {"zh", "UN"},    {"", "UN"}};
    std::vector<std::string> recordNames;
    for (const auto& [record, uf] : names) {
        recordNames.push_back(record);
    }
    Cufrw uf;
    ASSERT_EQ(uf.pluvek2uf(makeRecords(recordNames, 1, 1).get()), 1);
    for (std::size_t f = 0; f < names.size(); ++f) {
        EXPECT_EQ(uf.rays[0].table[f].name, names[f].second) << names[f].first;
    }
}

TEST(ToUniversalFormat, HeadersComeFromTheFirstRecord) {
    auto records = makeRecords({"Zh", "V"}, 2, 3);
    Cpluvek& r = records[0];
    r.latitude = 50.5125f, r.longitude = -7.2578125f, r.altitude = 99.9f;
    r.year = 2014, r.month = 8, r.day = 10, r.hour = 18, r.minute = 20, r.second = 5;
    r.angles[0] = 0.02618f, r.angles[1] = 1.5708f, r.angles[2] = -0.1f;
    r.rpm = 3.0f, r.beamwidth = 0.0174533f, r.wavelength = 0.0319f, r.pulsedepth = 75.5f;
    r.prf = 600.0f, r.nyquist = 12.345f, r.radarconst = -71.5f;
    Cufrw uf;
    ASSERT_EQ(uf.pluvek2uf(records.get()), 1);
    ASSERT_EQ(uf.nrays, 2);
    const Cufray& ray = uf.rays[1];
    const CufFieldHeader& h = ray.headers[1];
    // clang-format off
    const std::pair<int, int> expected[] = {
        {ray.recordnumber, 2}, {ray.raynumber, 2}, {ray.volumenumber, 1}, {ray.recordinray, 1},
        {ray.sweepnumber, 1}, {ray.latitudedegrees, 50}, {ray.latitudeminutes, 30},
        {ray.latitudeseconds, 45}, {ray.longitudedegrees, -7}, {ray.longitudeminutes, -15},
        {ray.longitudeseconds, -28}, {ray.altitude, 99}, {ray.year, 2014}, {ray.month, 8},
        {ray.day, 10}, {ray.hour, 18}, {ray.minute, 20}, {ray.second, 5},
        {uf.rays[0].azimuth, 5760}, {ray.azimuth, -366}, {ray.elevation, 96},
        {ray.baselineazimuth, -366}, {ray.baselineelevation, 96}, {uf.rays[0].fixedangle, 100},
        {ray.fixedangle, -6}, {ray.sweepmode, 1}, {ray.sweeprate, 1152},
        {ray.missingvalue, -32768}, {ray.starthour, 18}, {ray.startminute, 20},
        {ray.startsecond, 5}, {ray.flag, 1}, {ray.nfields, 2}, {ray.nrecords, 1},
        {ray.nrecordfields, 2}, {ray.nyquist, 1234}, {ray.radarconstant, -7150},
        {h.scalefactor, 100}, {h.firstgaterange, 2}, {h.firstgateadjustment, 2000},
        {h.gatespacing, 120}, {h.ngates, 3}, {h.gatedepth, 75}, {h.horizontalbeamwidth, 63},
        {h.verticalbeamwidth, 63}, {h.receiverbandwidth, -32768}, {h.polarisation, 1},
        {h.wavelength, 204}, {h.samples, -32768}, {h.thresholdvalue, -32768},
        {h.thresholdscale, -32768}, {h.repetitiontime, 1666}, {h.bitspergate, 16}
    };
    // clang-format on
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(expected[i].first, expected[i].second) << "entry " << i;
    }
    EXPECT_STREQ(ray.radarname, "TH      ");
    EXPECT_STREQ(ray.sitename, "UK      ");
    EXPECT_STREQ(ray.timezone, "UT");
    EXPECT_STREQ(ray.generationfacility, "PLUVEK  ");
    EXPECT_STREQ(ray.projectname, "RADAR   ");
    EXPECT_STREQ(ray.tapename, "RADAR   ");
    EXPECT_STREQ(h.editcode, "--");
    // Made today, or yesterday where midnight has just passed.
    std::string days;
    for (const std::time_t age : {0, 86400}) {
        const std::time_t then = std::time(nullptr) - age;
        const std::tm day = *std::localtime(&then);
        days += std::to_string(day.tm_year + 1900) + "-" + std::to_string(day.tm_mon + 1) + "-" +
                std::to_string(day.tm_mday) + " ";
    }
    EXPECT_NE(
        days.find(std::to_string(ray.generationyear) + "-" + std::to_string(ray.generationmonth) +
                  "-" + std::to_string(ray.generationday) + " "),
        std::string::npos);
}

TEST(ToUniversalFormat, WhatIsAbsentIsZeroOrMissing) {
    auto records = makeRecords({"Zh", "V", "W"}, 2, 2);
    delete[] records[0].angles;
    records[0].angles = nullptr;
    delete[] records[1].data;
    records[1].data = nullptr;
    records[2].nrays = 1;
    records[2].data[0] = 1.0f;
    Cufrw uf;
    ASSERT_EQ(uf.pluvek2uf(records.get()), 1);
    EXPECT_EQ(uf.rays[1].azimuth, 0);
    EXPECT_EQ(uf.rays[0].headers[0].repetitiontime, 0) << "no repetition frequency";
    const std::vector<int> missing(2, kUfMissing);
    EXPECT_EQ(words(uf, 0, 1), missing);
    EXPECT_EQ(words(uf, 0, 2), (std::vector<int>{100, 0}));
    EXPECT_EQ(words(uf, 1, 2), missing);
}

TEST(ToUniversalFormat, RaysThatDoNotFitARecordAreRefused) {
    struct Case {
        std::size_t nfields;
        int ngates, result;
    };
    // One field takes 62 + 2 + 19 words beside its gates.
    const Case cases[] = {{1, 65535 - 83, 1}, {1, 65535 - 82, 0}, {1, 65536, 0},
                          {20, 1000, 1},      {20, 3300, 0},      {21, 1, 0}};
    for (const Case& c : cases) {
        Cufrw uf;
        ASSERT_EQ(uf.pluvek2uf(makeRecords({"Zh"}, 1, 1).get()), 1);
        auto records = makeRecords(std::vector<std::string>(c.nfields, "Zh"), 1, c.ngates);
        EXPECT_EQ(uf.pluvek2uf(records.get()), c.result) << c.nfields << " x " << c.ngates;
        EXPECT_EQ(uf.nrays, c.result);
    }
    Cufrw uf;
    EXPECT_EQ(uf.pluvek2uf(nullptr), 0);
    Cpluvek empty;
    EXPECT_EQ(uf.pluvek2uf(&empty), 1);
    EXPECT_EQ(uf.nrays, 0);
    empty.nrays = 1, empty.ngates = 65536;
    EXPECT_EQ(uf.pluvek2uf(&empty), 0) << "no fields, but a gate count that exceeds a word";
    std::string nowhere = "/nonexistent/scan.uf";
    EXPECT_EQ(uf.write2file(nowhere.data()), 0);
}

TEST(ToUniversalFormat, TheResultIsReadyToBeWritten) {
    TempDir dir;
    std::string path = dir.file("scan.uf");
    auto records = makeRecords({"V", "Zh", "V"}, 3, 4);
    for (int f = 0; f < 3; ++f) {
        for (int i = 0; i < 12; ++i) {
            records[f].data[i] = 10.0f * f + i;
        }
    }
    records[0].nyquist = 7.5f;
    Cufrw uf, back;
    ASSERT_EQ(uf.pluvek2uf(records.get()), 1);
    ASSERT_EQ(uf.write2file(path.data()), 0);
    ASSERT_EQ(back.readfile(path.data()), 1);
    ASSERT_EQ(back.nrays, 3);
    EXPECT_EQ(back.rays[2].nyquist, 750);
    EXPECT_EQ(back.rays[2].sweepnumber, 1);
    for (int ray = 0; ray < 3; ++ray) {
        for (int f = 0; f < 3; ++f) {
            EXPECT_EQ(words(back, ray, f), words(uf, ray, f));
        }
        EXPECT_EQ(back.rays[ray].recordlength, uf.rays[ray].recordlength);
    }
    // Positions are words of the written record.
    const ByteVector file = readFile(path);
    const auto word = [&](int position) {
        return file[4 + 2 * (position - 1)] << 8 | file[5 + 2 * (position - 1)];
    };
    EXPECT_EQ(word(63), 'V' << 8 | 'R');
    EXPECT_EQ(word(word(68)), back.rays[0].headers[2].dataposition);
    EXPECT_EQ(word(word(word(68)) + 3), 2300) << "last field, first ray, fourth gate";
}

class FromUniversalFormat : public testing::Test {
  protected:
    void read(const std::vector<UfRecord>& records) {
        writeFile(path_, ufFile(records));
        ASSERT_EQ(uf_.readfile(path_.data()), 1);
    }

    TempDir dir_;
    std::string path_ = dir_.file("scan.uf");
    Cufrw uf_;
};

bool same(float a, float b) {
    return std::isnan(a) ? std::isnan(b) : a == b;
}

void expectValues(const Cpluvek& record, const std::vector<float>& expected) {
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(same(record.data[i], expected[i])) << i << ": " << record.data[i];
    }
}

TEST_F(FromUniversalFormat, WordsAreScaledAndMissingGatesKeepTheAbsentValue) {
    // The second ray is shorter and has its own missing value, the third one is longer.
    read({ufRay({{"DZ", {100, kUfMissing, 250}}, {"VR", {-100, kUfMissing, 7}, 10}}),
          ufRay({{"DZ", {-5, 300}, 7}, {"VR", {-5, 42}, 7}}).set(45, -5),
          ufRay({{"DZ", {1, 2, 3, 4}}, {"VR", {5, 6, 7, 8}}})});
    Cpluvek records[2];
    records[0].data = new float[1];  // replaced, not leaked
    uf_.uf2pluvek(records);
    expectValues(records[0], {1.0f, kNoRain, 2.5f, kNoRain, 3.0f, kNoRain, 0.01f, 0.02f, 0.03f});
    expectValues(records[1], {-10.0f, kNan, 0.7f, kNan, 4.2f, kNan, 0.5f, 0.6f, 0.7f});
    EXPECT_EQ(records[0].ngates, 3);
    EXPECT_EQ(records[0].nrays, 3);
    EXPECT_EQ(records[1].recindex, 1);
    EXPECT_EQ(records[1].nrecords, 2);
    EXPECT_EQ(records[0].valid, 0);
}

TEST_F(FromUniversalFormat, OnlyReflectivityCountsAsNoRain) {
    const std::pair<std::string, float> cases[] = {
        {"DZ", kNoRain}, {"CZ", kNoRain}, {"ZT", kNoRain}, {"ZD", kNan}, {"DR", kNan},
        {"PH", kNan},    {"RH", kNan},    {"DM", kNan},    {"UN", kNan}, {"LD", kNan}};
    for (const auto& [name, expected] : cases) {
        read({ufRay({{name, {kUfMissing}}})});
        Cpluvek record;
        uf_.uf2pluvek(&record);
        EXPECT_TRUE(same(record.data[0], expected)) << name;
    }
}

TEST_F(FromUniversalFormat, GeometryAndDescription) {
    read({ufRay({{"DZ", {1, 2}}, {"XX", {1, 2}}}).set(67 + 25 + 7, kUfMissing),
          ufRay({{"DZ", {1, 2}}, {"XX", {1, 2}}}).set(33, -64)});
    Cpluvek records[2];
    uf_.uf2pluvek(records);
    const Cpluvek& dz = records[0];
    EXPECT_FLOAT_EQ(dz.latitude, 50.0f + 30 / 60.0f + 36 / 3600.0f);
    EXPECT_FLOAT_EQ(dz.longitude, 7.0f + 15 / 60.0f + 18 / 3600.0f);
    EXPECT_FLOAT_EQ(dz.angles[0], 0.034906585f);
    EXPECT_FLOAT_EQ(dz.angles[1], 1.5707964f);
    EXPECT_FLOAT_EQ(dz.angles[2], -0.017453292f);
    EXPECT_FLOAT_EQ(dz.beamwidth, 0.017453292f);
    EXPECT_FLOAT_EQ(records[1].beamwidth, 0.017453292f) << "missing: one degree";
    EXPECT_EQ(dz.gatesize, 250.0f);
    EXPECT_EQ(dz.firstgate, 8);
    EXPECT_EQ(dz.coordtype, 0);
    EXPECT_EQ(dz.colormap, 7);
    EXPECT_EQ(dz.colorflag, 255);
    const float limits[] = {-500.0f, 500.0f, 200.0f, -500.0f, 500.0f, 200.0f};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(dz.axislimits[i], limits[i]) << i;
        EXPECT_EQ(dz.axislimits0[i], limits[i]) << i;
    }
    EXPECT_STREQ(dz.datetime, "10/08/2014 18:20:05");
    EXPECT_STREQ(dz.title, "DATA FILE, 10/08/2014 18:20:05");
    EXPECT_STREQ(dz.xlabel, "Easting [km]");
    EXPECT_STREQ(dz.ylabel, "Northing [km]");
    EXPECT_STREQ(dz.name, "DZ");
    EXPECT_STREQ(dz.units, "DZ");
}

TEST_F(FromUniversalFormat, DisplayRangesGoByName) {
    struct Case {
        const char* name;
        float lowest, highest;
    };
    const Case cases[] = {{"DZ", 0, 60},   {"DR", -8, 5},  {"PH", -30, 360}, {"RH", 0.5f, 1},
                          {"SW", 0, 2.5f}, {"VR", -5, 5},  {"CI", 0, 1},     {"SQ", 0, 1},
                          {"KD", 0, 10},   {"LD", -40, 0}, {"ZD", 0, 20}};
    std::vector<UfField> fields;
    for (const Case& c : cases) {
        fields.push_back({c.name, {1}});
    }
    read({ufRay(fields)});
    Cpluvek records[std::size(cases)];
    uf_.uf2pluvek(records);
    for (std::size_t f = 0; f < std::size(cases); ++f) {
        EXPECT_EQ(records[f].displaymin, cases[f].lowest) << cases[f].name;
        EXPECT_EQ(records[f].displaymax, cases[f].highest) << cases[f].name;
    }
}

TEST_F(FromUniversalFormat, DegenerateHeaders) {
    // No gate spacing and a scale of 0 give no range and no values.
    read({ufRay({{"DZ", {5}, 0}}).set(65 + 4, 0)});
    Cpluvek record;
    uf_.uf2pluvek(&record);
    EXPECT_EQ(record.firstgate, 0);
    EXPECT_EQ(record.data[0], kNoRain);
    uf_.uf2pluvek(nullptr);
    Cufrw none;
    record.ngates = 99;
    none.uf2pluvek(&record);
    EXPECT_EQ(record.ngates, 99);
}

/* Every ray gets the gates of the first one, in every field. */
TEST_F(FromUniversalFormat, OneLongRayAmongManyShortOnesIsNotBlownUp) {
    struct Case {
        std::size_t nfields, nrays;
        bool converted;
    };
    // 30,000 words of the first ray in a field, or the same words in each of 20.
    for (const Case& c :
         {Case{1, 128, true}, Case{1, 130, false}, Case{20, 6, true}, Case{20, 10, false}}) {
        std::vector<UfRecord> rays(c.nrays, ufRay({}));
        rays[0] = ufRay(std::vector<UfField>(c.nfields, {"DZ", {}}));
        const std::size_t data = 63 + 27 * c.nfields;
        for (std::size_t f = 0; f < c.nfields; ++f) {
            const std::size_t header = 63 + 2 * c.nfields + 25 * f;
            rays[0].set(header, static_cast<int>(data)).set(header + 5, 30000);
        }
        rays[0].set(data + 30000, 0);
        read(rays);
        Cpluvek records[20];
        uf_.uf2pluvek(records);
        EXPECT_EQ(records[0].data != nullptr, c.converted) << c.nfields << " x " << c.nrays;
    }
}

TEST(DegreesMinutesSeconds, AreTruncatedWithTheSignOfTheAngle) {
    struct Case {
        float angle;
        short degrees, minutes, seconds;
    };
    const Case cases[] = {{50.5125f, 50, 30, 45}, {-7.2578125f, -7, -15, -28},
                          {0.0f, 0, 0, 0},        {-0.5f, 0, -30, 0},
                          {kNan, 0, 0, 0},        {kInf, 0, 0, 0},
                          {65546.5f, 10, 30, 0},  {3e38f, 0, 0, 0}};
    for (const Case& c : cases) {
        short parts[2][3] = {{9, 9, 9}, {9, 9, 9}};
        deg2degminsec(c.angle, parts[0][0], parts[0][1], parts[0][2]);
        CThuPolDaFor().LatLonToDegMinSec(c.angle, parts[1][0], parts[1][1], parts[1][2]);
        for (const auto& [degrees, minutes, seconds] : parts) {
            EXPECT_EQ(degrees, c.degrees) << c.angle;
            EXPECT_EQ(minutes, c.minutes) << c.angle;
            EXPECT_EQ(seconds, c.seconds) << c.angle;
        }
    }
}

}  // namespace

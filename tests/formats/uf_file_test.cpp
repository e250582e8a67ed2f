/* Universal Format files made word by word: what is read, and what is written. */
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "clutterclassifier/Cufrw.h"
#include "formats/uf_bytes.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

class UfFile : public testing::Test {
  protected:
    int read(const ByteVector& bytes, Cufrw& uf) {
        writeFile(path_, bytes);
        testing::internal::CaptureStdout();
        const int result = uf.readfile(path_.data());
        printed_ = testing::internal::GetCapturedStdout();
        return result;
    }
    ByteVector written(Cufrw& uf) {
        EXPECT_EQ(uf.write2file(path_.data()), 0);
        return readFile(path_);
    }

    TempDir dir_;
    std::string path_ = dir_.file("scan.uf");
    std::string printed_;
};

std::vector<int> fieldWords(const Cufray& ray, int field) {
    const short* from = ray.data + field * ray.ngates;
    return std::vector<int>(from, from + ray.ngates);
}

/* Every word of a record its own number, texts and positions aside; one field of two gates. */
UfRecord numberedRecord() {
    UfRecord record;
    for (int word = 1; word <= 90; ++word) {
        record.set(word, 1000 + word);
    }
    record.text(1, "UF").text(11, "RADAR---").text(15, "SITE----").text(32, "UT");
    record.text(41, "FACILITY").text(46, "PROJECT-").text(55, "TAPENAME");
    record.set(4, 60).set(60, 1).text(63, "DM").set(64, 65);
    record.set(65, 91).set(70, 2).text(78, "TH").text(81, "EC");
    return record.set(91, -5).set(92, 6);
}

TEST_F(UfFile, EveryWordOfAHeaderReachesItsMember) {
    Cufrw uf;
    ASSERT_EQ(read(ufFile({numberedRecord()}), uf), 1);
    ASSERT_EQ(uf.nrays, 1);
    const Cufray& r = uf.rays[0];
    const CufFieldHeader& h = r.headers[0];
    // clang-format off
    const std::pair<int, int> words[] = {
        {r.recordlength, 2}, {r.optionalposition, 3}, {r.dataposition, 5}, {r.recordnumber, 6},
        {r.volumenumber, 7}, {r.raynumber, 8}, {r.recordinray, 9}, {r.sweepnumber, 10},
        {r.latitudedegrees, 19}, {r.latitudeminutes, 20}, {r.latitudeseconds, 21},
        {r.longitudedegrees, 22}, {r.longitudeminutes, 23}, {r.longitudeseconds, 24},
        {r.altitude, 25}, {r.year, 26}, {r.month, 27}, {r.day, 28}, {r.hour, 29}, {r.minute, 30},
        {r.second, 31}, {r.azimuth, 33}, {r.elevation, 34}, {r.sweepmode, 35}, {r.fixedangle, 36},
        {r.sweeprate, 37}, {r.generationyear, 38}, {r.generationmonth, 39}, {r.generationday, 40},
        {r.missingvalue, 45}, {r.baselineazimuth, 50}, {r.baselineelevation, 51},
        {r.starthour, 52}, {r.startminute, 53}, {r.startsecond, 54}, {r.flag, 59},
        {r.nrecords, 61}, {r.nrecordfields, 62}, {h.scalefactor, 66}, {h.firstgaterange, 67},
        {h.firstgateadjustment, 68}, {h.gatespacing, 69}, {h.gatedepth, 71},
        {h.horizontalbeamwidth, 72}, {h.verticalbeamwidth, 73}, {h.receiverbandwidth, 74},
        {h.polarisation, 75}, {h.wavelength, 76}, {h.samples, 77}, {h.thresholdvalue, 79},
        {h.thresholdscale, 80}, {h.repetitiontime, 82}, {h.bitspergate, 83},
        {r.radarconstant, 84}, {r.noisepower, 85}, {r.receivergain, 86}, {r.peakpower, 87},
        {r.antennagain, 88}, {r.pulseduration, 89}
    };
    // clang-format on
    for (const auto& [member, word] : words) {
        EXPECT_EQ(member, 1000 + word);
    }
    // clang-format off
    const std::pair<const char*, const char*> texts[] = {
        {r.format, "UF"}, {r.radarname, "RADAR---"}, {r.sitename, "SITE----"}, {r.timezone, "UT"},
        {r.generationfacility, "FACILITY"}, {r.projectname, "PROJECT-"}, {r.tapename, "TAPENAME"},
        {r.table[0].name, "DM"}, {h.thresholdfield, "TH"}, {h.editcode, "EC"}};
    // clang-format on
    for (const auto& [member, text] : texts) {
        EXPECT_STREQ(member, text);
    }
    EXPECT_EQ(h.dataposition, 91);
    EXPECT_EQ(r.table[0].position, 65);
    EXPECT_EQ(fieldWords(r, 0), (std::vector<int>{-5, 6}));
}

TEST_F(UfFile, WritingGivesBackTheWordsReadExceptLengthsAndPositions) {
    Cufrw uf;
    UfRecord record = numberedRecord();
    ASSERT_EQ(read(ufFile({record}), uf), 1);
    record.set(2, 92).set(3, 46).set(5, 60).set(90, 0);
    EXPECT_EQ(written(uf), ufFile({record}));
}

TEST_F(UfFile, ASoundFileIsWrittenAsItWasRead) {
    const ByteVector file =
        ufFile({ufRay({{"DZ", {1, 2, 3}}, {"VR", {-4, kUfMissing, 6}}, {"DM", {7, 8, 9}}}, 1),
                ufRay({{"DZ", {10, 20}}, {"VR", {30, 40}}, {"DM", {50, 60}}}, 2)});
    Cufrw uf;
    ASSERT_EQ(read(file, uf), 1);
    EXPECT_EQ(uf.rays[1].ngates, 2);
    EXPECT_EQ(fieldWords(uf.rays[0], 1), (std::vector<int>{-4, kUfMissing, 6}));
    uf.rays[0].year = uf.rays[1].year = 14;
    EXPECT_EQ(written(uf), file);
    EXPECT_EQ(fieldWords(uf.rays[1], 2), (std::vector<int>{50, 60})) << "memory was not swapped";
}

TEST_F(UfFile, TwoDigitYearsBelowTwentyAreCompleted) {
    const std::pair<int, int> years[] = {{0, 2000}, {19, 2019},   {20, 20},
                                         {98, 98},  {2011, 2011}, {-5, 1995}};
    for (const auto& [word, year] : years) {
        Cufrw uf;
        ASSERT_EQ(read(ufFile({ufRay({}).set(26, word).set(38, word)}), uf), 1);
        EXPECT_EQ(uf.rays[0].year, year);
        EXPECT_EQ(uf.rays[0].generationyear, year);
    }
}

/* A ray without an optional header: the data header follows the mandatory one at once. */
UfRecord rayWithoutOptionalHeader() {
    UfRecord ray;
    ray.set(3, 46).set(4, 46).set(5, 46).set(45, kUfMissing);
    ray.set(46, 2).set(47, 1).set(48, 2).text(49, "DZ").set(50, 53).text(51, "ZD").set(52, 72);
    ray.set(53, 91).set(54, 100).set(58, 3).set(72, 94).set(73, 50).set(77, 3);
    for (int g = 0; g < 6; ++g) {
        ray.set(91 + g, 11 * (g + 1));
    }
    return ray;
}

TEST_F(UfFile, ARayWithoutOptionalHeaderGetsOneWhenWritten) {
    Cufrw uf;
    ASSERT_EQ(read(ufFile({rayWithoutOptionalHeader()}), uf), 1);
    EXPECT_STREQ(uf.rays[0].projectname, "");
    const ByteVector file = written(uf);
    Cufrw back;
    ASSERT_EQ(read(file, back), 1);
    const Cufray& ray = back.rays[0];
    EXPECT_EQ(ray.localposition, 60);
    EXPECT_STREQ(ray.table[1].name, "ZD");
    EXPECT_EQ(ray.headers[1].scalefactor, 50);
    EXPECT_EQ(fieldWords(ray, 0), (std::vector<int>{11, 22, 33}));
    EXPECT_EQ(fieldWords(ray, 1), (std::vector<int>{44, 55, 66}));
    // The fields moved to the end of the table, keeping their distances.
    EXPECT_EQ(ray.table[0].position, 67);
    EXPECT_EQ(ray.headers[1].dataposition, 94 + 14);
    EXPECT_EQ(ray.recordlength, 96 + 14);
    EXPECT_EQ(written(back), file);
}

TEST_F(UfFile, WordsAfterAFieldHeaderNeverDamageOtherWords) {
    // Headers of 19 words without room, the velocity's just before the data of another field.
    UfRecord ray = ufRay({});
    ray.set(60, 2).set(62, 2).text(63, "DZ").set(64, 67).text(65, "VR").set(66, 86);
    ray.set(67, 105).set(72, 3).set(86, 108).set(91, 3);
    for (int g = 0; g < 6; ++g) {
        ray.set(105 + g, g + 1);
    }
    Cufrw uf, back;
    ASSERT_EQ(read(ufFile({ray}), uf), 1);
    EXPECT_EQ(uf.rays[0].nyquist, 1);
    ASSERT_EQ(read(written(uf), back), 1);
    EXPECT_EQ(fieldWords(back.rays[0], 0), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(fieldWords(back.rays[0], 1), (std::vector<int>{4, 5, 6}));
}

TEST_F(UfFile, AFieldWithoutAPositionIsNotWritten) {
    Cufrw uf, back;
    ASSERT_EQ(read(ufFile({ufRay({{"DZ", {1, 2}}, {"ZD", {3, 4}}})}), uf), 1);
    uf.rays[0].table[1].position = 0;
    ASSERT_EQ(read(written(uf), back), 1);
    EXPECT_EQ(fieldWords(back.rays[0], 0), (std::vector<int>{1, 2}));
    EXPECT_EQ(fieldWords(back.rays[0], 1), (std::vector<int>{kUfMissing, kUfMissing}));
}

TEST_F(UfFile, WhatARecordDoesNotHoldIsZeroOrMissing) {
    UfRecord ray = ufRay({{"DZ", {1, 2, 3}}, {"ZD", {4, 5, 6}}, {"VR", {7, 8, 9}}});
    ray.set(45, -99).set(68, 60000);  // the third field's header is past the end
    ray.cut(ray.size() - 4);          // and the second field's last gate too
    Cufrw uf;
    ASSERT_EQ(read(ufFile({ray}), uf), 1);
    EXPECT_EQ(fieldWords(uf.rays[0], 0), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(fieldWords(uf.rays[0], 1), (std::vector<int>{4, 5, -99}));
    EXPECT_EQ(fieldWords(uf.rays[0], 2), (std::vector<int>{-99, -99, -99}));
    EXPECT_EQ(uf.rays[0].headers[2].scalefactor, 0);
    EXPECT_EQ(uf.rays[0].nyquist, 0);
}

TEST_F(UfFile, TheFirstRaysFieldCountServesForAll) {
    UfRecord second = ufRay({{"DZ", {7}}, {"ZD", {8}}});
    Cufrw uf;
    ASSERT_EQ(read(ufFile({ufRay({{"DZ", {1}}, {"ZD", {2}}}), second.set(60, 5000)}), uf), 1);
    EXPECT_EQ(uf.rays[1].nfields, 5000);
    EXPECT_EQ(fieldWords(uf.rays[1], 1), std::vector<int>{8});
    EXPECT_EQ(uf.write2file(path_.data()), 0);
}

struct Framing {
    const char* what;
    ByteVector file;
    int result;
    int nrays;
};

std::vector<Framing> framings() {
    const UfRecord ray = ufRay({{"DZ", {1, 2, 3}}});
    const auto cut = [](const ByteVector& bytes, std::ptrdiff_t n) {
        return ByteVector(bytes.begin(), bytes.end() - n);
    };
    const ByteVector one = ufFile({ray}), two = ufFile({ray, ray});
    ByteVector endless = two;
    for (std::size_t i = one.size(); i < one.size() + 4; ++i) {
        endless[i] = 0xff;
    }
    ByteVector backwards = two;
    for (std::size_t i = one.size(); i < one.size() + 4; ++i) {
        backwards[i] = 0;
    }
    UfRecord other = ray;
    other.text(1, "XX");
    UfRecord manyGates = ray;
    manyGates.set(65 + 5, static_cast<int>(ray.size()) + 1);
    return {{"empty", {}, 1, 0},
            {"part of a length", {0, 0, 1}, 1, 0},
            {"not Universal Format", ufFile({other}), 0, 0},
            {"only the first record is looked at", ufFile({ray, other}), 1, 2},
            {"first record of 57 words", ufFile({UfRecord(57)}), 1, 1},
            {"first record of 56 words", ufFile({UfRecord(56)}), 0, 0},
            {"first record past the end", cut(one, 5), 0, 0},
            {"no length after the last record", cut(two, 4), 1, 2},
            {"part of a length after the last record", cut(two, 1), 1, 2},
            {"second record past the end", cut(two, 5), 1, 1},
            {"second record endless", endless, 1, 1},
            {"second record of no length", backwards, 1, 1},
            {"second record too short", ufFile({ray, UfRecord(56), ray}), 1, 1},
            {"more gates than words", ufFile({manyGates}), 0, 1}};
}

TEST_F(UfFile, ReadingEndsWhereTheFramingDoes) {
    for (const Framing& c : framings()) {
        SCOPED_TRACE(c.what);
        Cufrw uf;
        read(ufFile({ufRay({}), ufRay({}), ufRay({})}), uf);
        EXPECT_EQ(read(c.file, uf), c.result);
        EXPECT_EQ(uf.nrays, c.nrays);
        EXPECT_EQ(printed_, "");
    }
}

TEST_F(UfFile, MoreThanTwentyFieldsAreRefused) {
    std::vector<UfField> fields(20, {"DZ", {5}});
    Cufrw uf;
    EXPECT_EQ(read(ufFile({ufRay(fields)}), uf), 1);
    EXPECT_EQ(fieldWords(uf.rays[0], 19), std::vector<int>{5});
    for (const int count : {21, 0x8000, 0xffff}) {
        EXPECT_EQ(read(ufFile({ufRay(fields).set(60, count)}), uf), 0) << count;
        EXPECT_EQ(printed_,
                  "The number of fields is larger than 20!. Please increase the array sizes.\n");
        // What is left is safe to use.
        Cpluvek records[20];
        uf.uf2pluvek(records);
        EXPECT_EQ(uf.write2file(path_.data()), 0);
    }
}

TEST_F(UfFile, FilesThatCannotBeUsed) {
    Cufrw uf;
    std::string absent = dir_.file("absent/scan.uf"), directory = dir_.path(), full = "/dev/full";
    EXPECT_EQ(uf.readfile(absent.data()), 0);
    EXPECT_EQ(uf.readfile(directory.data()), 0);
    EXPECT_EQ(uf.readfile(nullptr), 0);
    EXPECT_EQ(uf.write2file(absent.data()), 0);
    EXPECT_FALSE(std::filesystem::exists(absent));
    ASSERT_EQ(read(ufFile({ufRay({{"DZ", {1}}})}), uf), 1);
    EXPECT_EQ(uf.write2file(absent.data()), 0);
    if (std::filesystem::exists(full)) {
        EXPECT_NE(uf.write2file(full.data()), 0);
    }
    uf.deletearrays();
    uf.deletearrays();
    EXPECT_EQ(uf.nrays, 0);
}

TEST(UfSwap, ReversesBytes) {
    Cufrw uf;
    short words[] = {0x0102, -2, 0x0304};
    uf.endian_swap(words, 2);
    EXPECT_EQ(words[0], 0x0201);
    EXPECT_EQ(words[1], -257);
    EXPECT_EQ(words[2], 0x0304);
    uf.endian_swap(words, -1);
    unsigned short unsignedWord = 0xff01;
    short word = 0x7fff;
    unsigned int unsignedValue = 0x01020304;
    int value = 0x010203ff;
    uf.endian_swap(unsignedWord), uf.endian_swap(word);
    uf.endian_swap(unsignedValue), uf.endian_swap(value);
    EXPECT_EQ(unsignedWord, 0x01ff);
    EXPECT_EQ(word, static_cast<short>(0xff7f));
    EXPECT_EQ(unsignedValue, 0x04030201u);
    EXPECT_EQ(value, static_cast<int>(0xff030201));
}

}  // namespace

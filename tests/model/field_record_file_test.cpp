/* Field record files: every member, storage types, blocks of any size, faults. */
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "clutterclassifier/Cpluvek.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::ByteVector;
using clutter::test::readFile;
using clutter::test::TempDir;
using clutter::test::writeFile;

constexpr int kRays = 3;
constexpr int kGates = 4;
/* Offsets in a block of kRays x kGates floats. */
constexpr std::size_t kAngles = 1052;
constexpr std::size_t kValueCounts = kAngles + 4 * (kRays + 1);
constexpr std::size_t kValues = kValueCounts + 8;
constexpr std::size_t kBlock = kValues + 4 * kRays * kGates;

using Records = std::unique_ptr<Cpluvek[]>;

template <class T>
T at(const ByteVector& bytes, std::size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

template <class T>
void put(ByteVector& bytes, std::size_t offset, T value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

void fill(Cpluvek& record, int index, int count, int nrays = kRays, int ngates = kGates) {
    record.nrecords = count;
    record.recindex = index;
    record.nrays = nrays;
    record.ngates = ngates;
    record.coordtype = record.firstgate = 0;
    record.gatesize = 250.0f;
    record.colorflag = 255;
    record.angles = new float[nrays + 1];
    record.data = new float[nrays * ngates];
    for (int r = 0; r <= nrays; ++r) {
        record.angles[r] = 0.5f * r + index;
    }
    for (int i = 0; i < nrays * ngates; ++i) {
        record.data[i] = 1.5f * i - 4.0f + 100.0f * index;
    }
}

Records makeArray(int count) {
    Records records(new Cpluvek[count]);
    for (int i = 0; i < count; ++i) {
        fill(records[i], i, count);
    }
    return records;
}

std::vector<float> values(const Cpluvek& record, int n = kRays * kGates) {
    return record.data ? std::vector<float>(record.data, record.data + n) : std::vector<float>();
}

std::vector<float> angles(const Cpluvek& record, int n = kRays + 1) {
    return std::vector<float>(record.angles, record.angles + n);
}

class FieldRecordFile : public testing::Test {
  protected:
    /* The bytes that an array is written as. */
    ByteVector written(Cpluvek* records) {
        EXPECT_EQ(records->WriteDataToFile(path_.c_str()), 1);
        return readFile(path_);
    }
    int read(const ByteVector& bytes, Cpluvek* records) {
        writeFile(path_, bytes);
        testing::internal::CaptureStdout();
        const int result = records->ReadDataFromFile(path_.c_str());
        printed_ = testing::internal::GetCapturedStdout();
        return result;
    }

    TempDir dir_;
    std::string path_ = dir_.file("records");
    std::string printed_;
};

TEST_F(FieldRecordFile, EveryMemberLiesWhereTheFormatHasIt) {
    auto records = makeArray(2);
    Cpluvek& r = records[1];
    const int numbers[] = {61, 62};  // coordtype, firstgate
    r.coordtype = numbers[0], r.firstgate = numbers[1];
    float* floats[] = {&r.gatesize,   &r.beamwidth, &r.wavelength, &r.prf,
                       &r.pulsedepth, &r.rpm,       &r.nsamples};
    for (int i = 0; i < 7; ++i) {
        *floats[i] = 1.25f + i;
    }
    for (int i = 0; i < 6; ++i) {
        r.axislimits[i] = 10.5f + i, r.axislimits0[i] = -1.0f;
    }
    r.colormap = 71, r.displaymin = -3.5f, r.displaymax = 4.5f, r.colorflag = 200;
    r.year = 2011, r.month = 5, r.day = 24, r.hour = 23, r.minute = 56, r.second = 7;
    r.GetDateTime();
    std::strcpy(r.title, "a title"), std::strcpy(r.xlabel, "x"), std::strcpy(r.ylabel, "y");
    std::strcpy(r.name, "Reflectivity"), std::strcpy(r.units, "dBZ");
    r.datatype = 0, r.scale = 0.125, r.offset = -40.0;

    const ByteVector file = written(records.get());
    ASSERT_EQ(file.size(), 2 * kBlock);
    const ByteVector block(file.begin() + kBlock, file.end());
    EXPECT_EQ(std::memcmp(block.data(), "PLUVEK V1.3  \x05\xAC\x1A\xE1\x40\x6F", 20), 0);
    // clang-format off
    const std::pair<std::size_t, int> ints[] = {
        {20, kGates}, {24, kRays}, {28, 61}, {32, 62}, {64, 2}, {224, 71}, {250, 2011}, {254, 5},
        {258, 24}, {262, 23}, {266, 56}, {270, 7}, {1024, 0}, {1044, kRays + 1}, {1048, 1},
        {kValueCounts, kGates}, {kValueCounts + 4, kRays}};
    // clang-format on
    for (const auto& [offset, value] : ints) {
        EXPECT_EQ(at<int>(block, offset), value) << offset;
    }
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(at<float>(block, 36 + 4 * i), 1.25f + i) << i;
    }
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(at<float>(block, 200 + 4 * i), 10.5f + i) << i;
    }
    EXPECT_EQ(at<float>(block, 228), -3.5f);
    EXPECT_EQ(at<float>(block, 232), 4.5f);
    EXPECT_EQ(block[236], 200);
    const std::pair<std::size_t, const char*> texts[] = {
        {300, "24/05/2011 23:56:07"}, {320, "a title"}, {420, "x"}, {520, "y"}, {630, "dBZ"}};
    for (const auto& [offset, text] : texts) {
        EXPECT_STREQ(reinterpret_cast<const char*>(&block[offset]), text);
    }
    EXPECT_EQ(std::memcmp(&block[620], "Reflectivi", 10), 0);
    EXPECT_EQ(at<double>(block, 1028), 0.125);
    EXPECT_EQ(at<double>(block, 1036), -40.0);
    EXPECT_EQ(at<float>(block, kAngles + 4), r.angles[1]);
    EXPECT_EQ(at<float>(block, kValues + 4 * 5), r.data[5]);
    const std::pair<std::size_t, std::size_t> gaps[] = {
        {68, 200}, {237, 250}, {274, 300}, {640, 1024}};
    for (const auto& [from, to] : gaps) {
        EXPECT_EQ(std::count(block.begin() + from, block.begin() + to, 0),
                  static_cast<std::ptrdiff_t>(to - from));
    }
}

TEST_F(FieldRecordFile, ReadingGivesBackWhatWasWritten) {
    auto records = makeArray(3);
    for (int i = 0; i < 3; ++i) {
        records[i].year = 2000 + i;
        records[i].axislimits[2] = 7.0f + i;
        records[i].scale = 0.5;
        records[i].offset = -10.0;
        std::strcpy(records[i].name, i == 1 ? "ZDR" : "Z");
    }
    const ByteVector file = written(records.get());
    Records back(new Cpluvek[3]);
    back[1].radarid = 77;
    back[1].recindex = 55;
    ASSERT_EQ(read(file, back.get()), 1);
    EXPECT_EQ(printed_, "");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(values(back[i]), values(records[i])) << i;
        EXPECT_EQ(angles(back[i]), angles(records[i])) << i;
        EXPECT_EQ(back[i].year, 2000 + i);
        EXPECT_EQ(back[i].nrecords, 3);
        EXPECT_EQ(back[i].valid, 1);
        EXPECT_EQ(back[i].axislimits0[2], 7.0f + i);
    }
    EXPECT_STREQ(back[1].name, "ZDR");
    EXPECT_EQ(back[1].radarid, 77);
    EXPECT_EQ(back[1].recindex, 55);
    // The same bytes again: nothing that a file holds was lost.
    EXPECT_EQ(written(back.get()), file);
}

TEST_F(FieldRecordFile, PackedValuesAreRoundedAndWrap) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    struct Case {
        int datatype;
        double scale, offset;
        float value;
        unsigned raw;
    };
    const Case cases[] = {
        {2, 0.5, -32.0, -32.0f, 0},   {2, 0.5, -32.0, 10.25f, 85},
        {2, 0.5, -32.0, 95.5f, 255},  {2, 0.5, -32.0, 96.0f, 0},
        {2, 0.5, -32.0, -32.5f, 255}, {3, 0.01, -100.0, 0.0f, 10000},
        {3, 1.0, 0.0, 65536.0f, 0},   {3, 1.0, 0.0, -1.0f, 65535},
        {3, 1.0, 0.0, 2.5f, 3},       {3, 1.0, 0.0, -2.5f, 65534},
        {2, 1.0, 0.0, nan, 0},        {3, 1.0, 0.0, inf, 0},
        {3, 1.0, 0.0, 1e19f, 0},      {2, 0.0, 0.0, 5.0f, 0},
        {2, 0.0, 5.0, 5.0f, 0},       {3, 1.0, 0.0, 4294967296.0f, 0},
    };
    for (const Case& c : cases) {
        Records record(new Cpluvek[1]);
        fill(record[0], 0, 1);
        record[0].datatype = c.datatype;
        record[0].scale = c.scale;
        record[0].offset = c.offset;
        record[0].data[1] = c.value;
        const ByteVector file = written(record.get());
        const std::size_t width = c.datatype == 2 ? 1 : 2;
        ASSERT_EQ(file.size(), kValues + width * kRays * kGates);
        const unsigned raw = width == 1 ? file[kValues + 1] : at<std::uint16_t>(file, kValues + 2);
        EXPECT_EQ(raw, c.raw) << c.datatype << ": " << c.value << " by " << c.scale;
        ASSERT_EQ(read(file, record.get()), 1);
        EXPECT_EQ(record[0].data[1], static_cast<float>(c.raw * c.scale + c.offset));
    }
}

TEST_F(FieldRecordFile, UnknownStorageTypesAreFloats) {
    for (const int datatype : {1, 4, -7}) {
        auto record = makeArray(1);
        record[0].datatype = datatype;
        const ByteVector file = written(record.get());
        EXPECT_EQ(file.size(), kBlock);
        Records back(new Cpluvek[1]);
        ASSERT_EQ(read(file, back.get()), 1);
        EXPECT_EQ(values(back[0]), values(record[0]));
    }
}

TEST_F(FieldRecordFile, UnterminatedTextsAreTerminated) {
    auto record = makeArray(1);
    std::memset(record[0].title, 't', sizeof record[0].title);
    std::memset(record[0].datetime, 'd', sizeof record[0].datetime);
    std::strcpy(record[0].name, "abcdefghijklm");
    std::strcpy(record[0].units, "dBZ");
    const ByteVector file = written(record.get());
    Records back(new Cpluvek[1]);
    std::memset(back[0].name, '*', sizeof back[0].name);
    std::memset(back[0].units, '*', sizeof back[0].units);
    ASSERT_EQ(read(file, back.get()), 1);
    EXPECT_STREQ(back[0].name, "abcdefghij");
    EXPECT_STREQ(back[0].units, "dBZ");
    for (const char* text : {back[0].name, back[0].units}) {
        EXPECT_EQ(std::string(text + 11, 88), std::string(88, '*'));
        EXPECT_EQ(text[99], '\0');
    }
    EXPECT_EQ(std::strlen(back[0].title), 99u);
    EXPECT_EQ(std::strlen(back[0].datetime), 19u);
}

TEST_F(FieldRecordFile, ARecordWithoutEnoughValuesIsPaddedWithZeros) {
    Records records(new Cpluvek[3]);
    fill(records[0], 0, 3);
    fill(records[1], 1, 3, 1, kGates);
    const ByteVector file = written(records.get());
    ASSERT_EQ(file.size(), 3 * kBlock);
    Records back(new Cpluvek[3]);
    ASSERT_EQ(read(file, back.get()), 1);
    std::vector<float> expected(kRays * kGates, 0.0f);
    EXPECT_EQ(values(back[2]), expected);
    EXPECT_EQ(angles(back[2]), std::vector<float>(kRays + 1, 0.0f));
    std::copy_n(records[1].data, kGates, expected.begin());
    EXPECT_EQ(values(back[1]), expected);
    EXPECT_EQ(angles(back[1]), (std::vector<float>{1.0f, 1.5f, 0.0f, 0.0f}));
}

TEST_F(FieldRecordFile, ABlockThatDeclaresMoreThanTheSharedGridGetsArraysOfThatSize) {
    auto records = makeArray(2);
    ByteVector file = written(records.get());
    put(file, kBlock + 20, 10);
    put(file, kBlock + 24, 5);
    Records back(new Cpluvek[2]);
    ASSERT_EQ(read(file, back.get()), 1);
    EXPECT_EQ(back[1].ngates, 10);
    std::vector<float> expected = values(records[1]);
    expected.resize(50, 0.0f);
    EXPECT_EQ(values(back[1], 50), expected);
    EXPECT_EQ(angles(back[1], 6)[5], 0.0f);
}

TEST_F(FieldRecordFile, FaultsAreRefusedAndLeaveLaterRecordsAlone) {
    const std::string message = "Error in Cpluvek!\n";
    struct Case {
        const char* what;
        std::function<void(ByteVector&)> damage;
        int filled;  // records read before the fault
        std::string printed;
    };
    const auto set = [](std::size_t offset, int value) {
        return [=](ByteVector& b) { put(b, offset, value); };
    };
    const auto cut = [](std::size_t size) { return [=](ByteVector& b) { b.resize(size); }; };
    const Case cases[] = {
        {"empty", cut(0), 0, ""},
        {"identification cut", cut(19), 0, ""},
        {"first header cut", cut(1043), 0, ""},
        {"identification, first byte", [](ByteVector& b) { b[0] = 'p'; }, 0, ""},
        {"identification, last byte", [](ByteVector& b) { b[18] = 0; }, 0, ""},
        {"identification unterminated", [](ByteVector& b) { b[19] = 1; }, 0, ""},
        {"no blocks", set(64, 0), 0, ""},
        {"negative blocks", set(64, -3), 0, ""},
        {"more blocks than bytes", set(64, INT_MAX), 0, ""},
        {"one block more", set(64, 4), 0, ""},
        {"one block more than whole ones",
         [](ByteVector& b) { put(b, 64, 4), b.resize(b.size() + 900); }, 3, ""},
        {"negative gates", set(20, -1), 0, message},
        {"negative rays", set(24, -1), 0, message},
        {"huge gates", set(20, INT_MAX), 0, ""},
        {"huge grid", [](ByteVector& b) { put(b, 20, INT_MAX), put(b, 24, INT_MAX - 1); }, 0, ""},
        {"angle count", set(1044, kRays), 0, message},
        {"angle rows", set(1048, 2), 0, message},
        {"value count", set(kValueCounts, kGates + 1), 0, message},
        {"third block's value count", set(2 * kBlock + kValueCounts + 4, 0), 2, message},
        {"second block's negative gates", set(kBlock + 20, INT_MIN), 1, message},
        {"second block's huge rays", set(kBlock + 24, 1 << 28), 1, ""},
        {"second block larger than the file justifies", set(kBlock + 20, 1 << 17), 1, ""},
        {"two such blocks together",
         [](ByteVector& b) { put(b, kBlock + 24, 40000), put(b, 2 * kBlock + 24, 40000); }, 2, ""},
        {"cut in the third block's values", cut(3 * kBlock - 1), 2, ""},
        {"cut in the third block's angles", cut(2 * kBlock + kAngles + 7), 2, ""},
        {"cut in the third block's header", cut(2 * kBlock + 1000), 2, ""},
        {"cut below the smallest size of three blocks", cut(2 * kBlock + 900), 0, ""},
    };
    auto records = makeArray(3);
    const ByteVector sound = written(records.get());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ByteVector file = sound;
        c.damage(file);
        Records back(new Cpluvek[5]);
        for (int i = 0; i < 5; ++i) {
            fill(back[i], i, 5, 1, 1), back[i].data[0] = -5.0f;
        }
        EXPECT_EQ(read(file, back.get()), 0);
        EXPECT_EQ(printed_, c.printed);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(back[i].valid, i < c.filled ? 1 : 0) << i;
            EXPECT_EQ(back[i].ngates, i < c.filled ? kGates : 1) << i;
            EXPECT_EQ(values(back[i], 1)[0], i < c.filled ? records[i].data[0] : -5.0f) << i;
        }
    }
}

TEST_F(FieldRecordFile, CountsMayBeSplitDifferently) {
    auto record = makeArray(1);
    ByteVector file = written(record.get());
    put(file, 1044, 1), put(file, 1048, kRays + 1);
    put(file, kValueCounts, kRays * kGates), put(file, kValueCounts + 4, 1);
    Records back(new Cpluvek[1]);
    ASSERT_EQ(read(file, back.get()), 1);
    EXPECT_EQ(values(back[0]), values(record[0]));
}

TEST_F(FieldRecordFile, EmptyGridsAndEmptyArrays) {
    Records record(new Cpluvek[1]);
    fill(record[0], 0, 1, 0, 0);
    EXPECT_EQ(read(written(record.get()), record.get()), 1);
    record[0].nrecords = 0;
    EXPECT_EQ(written(record.get()).size(), 0u);
}

TEST_F(FieldRecordFile, FilesThatCannotBeUsed) {
    auto record = makeArray(1);
    const std::string absent = dir_.file("absent/file");
    EXPECT_EQ(record[0].ReadDataFromFile(absent.c_str()), 0);
    EXPECT_EQ(record[0].WriteDataToFile(absent.c_str()), 0);
    EXPECT_EQ(record[0].ReadDataFromFile(dir_.path().c_str()), 0);
    EXPECT_EQ(record[0].ReadDataFromFile(nullptr), 0);
    EXPECT_EQ(record[0].WriteDataToFile(nullptr), 0);
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(record[0].WriteDataToFile("/dev/full"), 0);
    }
}

}  // namespace

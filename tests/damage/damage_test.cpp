/*
 * Damaged files: every prefix of small sound files, and thousands of mutations of them. Nothing is
 * asked of the results but that they are consistent; that nothing is read or written outside an
 * array is seen when this runs under the address sanitizer.
 */
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "clutterclassifier/CGermanRadar.h"
#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cfuzzy.h"
#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cradarpro.h"
#include "clutterclassifier/Cufrw.h"
#include "damage/text_files.h"
#include "formats/german_dx_bytes.h"
#include "formats/polar_bytes.h"
#include "formats/uf_bytes.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr int kMutations = 4000;
constexpr int kRecords = 3;

/* --- what every reader must hold to, whatever it is given --- */

/* Sums what the arrays of a record hold by its own sizes: reads every element once. */
void expectUsable(const Cpluvek& record) {
    if (record.data == nullptr) {
        return;
    }
    ASSERT_GE(record.ngates, 0);
    ASSERT_GE(record.nrays, 0);
    double sum = 0.0;
    for (int i = 0; i < record.nrays * record.ngates; ++i) {
        sum += record.data[i];
    }
    for (int r = 0; r <= record.nrays; ++r) {
        sum += record.angles[r];
    }
    for (const char* text : {record.name, record.units, record.title}) {
        sum += std::strlen(text);
    }
    (void)std::isnan(sum);
}

void exerciseUniversalFormat(const std::string& path, const std::string& copy) {
    Cufrw uf;
    std::string in = path, out = copy;
    const int result = uf.readfile(in.data());
    ASSERT_TRUE(result == 0 || result == 1);
    ASSERT_TRUE(uf.nrays == 0 || uf.rays != nullptr);
    Cpluvek records[20];
    uf.uf2pluvek(records);
    for (const Cpluvek& record : records) {
        expectUsable(record);
    }
    uf.write2file(out.data());
    // Fields that lay over each other may have become anything when written.
    Cufrw back;
    back.readfile(out.data());
    back.uf2pluvek(records);
    uf.pluvek2uf(records);
}

void exerciseFieldRecords(const std::string& path, const std::string& copy) {
    Cpluvek records[kRecords + 1];
    const int result = records[0].ReadDataFromFile(path.c_str());
    ASSERT_TRUE(result == 0 || result == 1);
    for (const Cpluvek& record : records) {
        expectUsable(record);
    }
    if (result == 0) {
        return;
    }
    ASSERT_LE(records[0].nrecords, kRecords);
    ASSERT_EQ(records[0].WriteDataToFile(copy.c_str()), 1);
    // Not always readable: a block may declare more values than its array has.
    Cpluvek back[kRecords + 1];
    back[0].ReadDataFromFile(copy.c_str());
    for (const Cpluvek& record : back) {
        expectUsable(record);
    }
}

void exerciseMembership(const std::string& path, const std::string&) {
    Cfuzzy engine(1, 2, 1, 1);
    std::string name = path;
    double *x = nullptr, *y = nullptr;
    int points = 0;
    const int result = engine.readmf(name.data(), &x, &y, points);
    ASSERT_TRUE(result == 1 || result == -1 || result == -2);
    ASSERT_TRUE(result != 1 || points > 0);
    for (int i = 0; result == 1 && i < points; ++i) {
        (void)std::isnan(x[i] + y[i]);
    }
    delete[] x;
    delete[] y;
    float params[5] = {};
    engine.Fillmfs(0, 0, "input", "m", path.c_str(), params);
    engine.Fillmfs(0, 1, "input", "o", "ones", params);
    short rules[] = {0, 4, 1, 7};
    engine.Fillrules(rules, 2);
    float values[] = {-1e30f, -1.0f, 0.0f, 0.5f, 2.0f, 1e30f, NAN, INFINITY};
    engine.AddressDataPointers(0, values);
    float classes[std::size(values)];
    ASSERT_EQ(engine.Evaluate(classes, std::size(values)), result == 1 ? 1 : 0);
    for (std::size_t i = 0; result == 1 && i < std::size(values); ++i) {
        ASSERT_TRUE(classes[i] == 4.0f || classes[i] == 7.0f || classes[i] == -1.0f);
    }
}

void exerciseProfiles(const std::string& path, const std::string&) {
    Cradarpro radar;
    std::string name = path;
    double *vpr = nullptr, dh = 0.0;
    int profiles = 0, levels = 0, reference = 0;
    ASSERT_EQ(radar.GetVPR(&vpr, profiles, levels, reference, dh, name.data(), 0), 1);
    double sum = 0.0;
    for (int i = 0; i < profiles * levels; ++i) {
        sum += vpr[i];
    }
    (void)std::isnan(sum);
    delete[] vpr;
    double z[] = {100.0, 1000.0}, range[] = {2e4, 2e4}, freezing[] = {300.0, NAN};
    ASSERT_EQ(radar.VPRCorrection(z, z, range, freezing, 2, 0.01, 0.017, name.data(), 0), 1);
}

/* Reader, order of rays, both writers, and the reader again. */
void exercisePolar(const std::string& path, const std::string& copy) {
    CThuPolDaFor polar;
    std::string in = path, out = copy;
    for (const int layout : {252, 280, 0}) {
        Cpluvek records[8];
        const int result = polar.ReadPolarData(in.data(), records, layout, layout == 280 ? 0 : 1);
        ASSERT_TRUE(result == 1 || result == -1 || result == -2) << result;
        const int fields = result == 1 ? records[0].nrecords : 0;
        ASSERT_LE(fields, 8);
        polar.SortPolarDataRays(records);
        for (int f = 0; f < fields; ++f) {
            ASSERT_NE(records[f].data, nullptr);
            expectUsable(records[f]);
        }
        if (polar.PackAgainDataFiles(in.data(), out.data(), layout) == 1) {
            Cpluvek packed[8];
            polar.ReadPolarData(out.data(), packed, layout, 1);
            for (const Cpluvek& record : packed) {
                expectUsable(record);
            }
        }
        if (result != 1) {
            continue;
        }
        records[0].radarid = 1521;
        ASSERT_EQ(polar.WriteSingleParameterData(out.c_str(), records, records + 1), 1);
    }
}

void exerciseGermanDx(const std::string& path, const std::string&) {
    const auto radar = std::make_unique<CGermanRadar>();
    std::string in = path;
    const int result = radar->readbinaryfile(in.data());
    ASSERT_TRUE(result == 0 || result == 1);
    ASSERT_TRUE(radar->bins == 100 || radar->bins == 128);
    Cpluvek records[2];
    radar->german2pluvek(records);
    ASSERT_EQ(records[0].data != nullptr, result == 1);
    for (const Cpluvek& record : records) {
        expectUsable(record);
    }
}

/* --- small sound files --- */

/* Steep enough, and with gates long enough, to be shortened. */
ByteVector polarSeed(int product, std::size_t gateBytes) {
    std::mt19937 random(9);
    PolarBytes file = randomPolarFile(product, gateBytes, gateBytes < 4, 2, 14, random);
    return file.set(274, 400).set(116, 5000).bytes();
}
ByteVector polarSeed2213(const std::string&) {
    return polarSeed(2213, 10);
}
ByteVector polarSeed2211(const std::string&) {
    return polarSeed(2211, 9);
}
ByteVector polarSeedSingle(const std::string&) {
    return polarSeed(1400, 2);
}

/* The whole 360 rays, as short as they can be. */
ByteVector germanDxSeed(const std::string&) {
    ByteVector bytes = dxStart();
    for (int r = 0; r < 360; ++r) {
        appendDxRay(bytes, 10 * r, 5, {40, 0, 99, 16});
    }
    return bytes;
}

ByteVector universalFormatSeed(const std::string&) {
    return ufFile({ufRay({{"DZ", {1, 2, kUfMissing, 4}}, {"VR", {5, 6, 7, 8}}}, 1),
                   ufRay({{"DZ", {9, 10}}, {"VR", {11, 12}}}, 2),
                   ufRay({{"DZ", {1, 2, 3}}, {"DM", {3, 2, 1}}}, 3).set(4, 46)});
}

ByteVector fieldRecordSeed(const std::string& scratch) {
    Cpluvek records[kRecords];
    for (int i = 0; i < kRecords; ++i) {
        Cpluvek& r = records[i];
        r.nrecords = kRecords;
        r.nrays = 2;
        r.ngates = 3;
        r.coordtype = r.firstgate = r.recindex = 0;
        r.gatesize = 100.0f;
        r.colorflag = 255;
        r.datatype = i + 1;
        r.scale = 0.5;
        r.data = new float[6]{1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f};
        r.angles = new float[3]{0.1f, 0.2f, 0.3f};
    }
    EXPECT_EQ(records[0].WriteDataToFile(scratch.c_str()), 1);
    return readFile(scratch);
}

ByteVector membershipSeed(const std::string&) {
    const std::string text = "-10.5 0\n0 0.25\r\n1.5e1 1\n\n2e2\t0.5 1e3 0.5\n";
    return ByteVector(text.begin(), text.end());
}

ByteVector profilesSeed(const std::string&) {
    const std::string text = "20.5 -3\n0 1e1\r\n1.5e1 nan\n\n-inf\t0x1p3 1e400 . +7";
    return ByteVector(text.begin(), text.end());
}

/* --- damage --- */

ByteVector mutate(const ByteVector& sound, std::mt19937& random) {
    const auto below = [&](std::size_t n) { return n ? random() % n : 0; };
    constexpr unsigned kWords[] = {0x0000, 0x0001, 0x7fff, 0x8000, 0xffff};
    ByteVector bytes = sound;
    for (std::size_t hits = 1 + below(4); hits > 0 && bytes.size() > 4; --hits) {
        const std::size_t at = below(bytes.size() - 3);
        const unsigned word = kWords[below(std::size(kWords))];
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        switch (below(6)) {
            case 0:
                bytes[at] ^= static_cast<unsigned char>(1u << below(8));
                break;
            case 1:  // big-endian, on a word's place
                bytes[at & ~std::size_t{1}] = static_cast<unsigned char>(word >> 8);
                bytes[at | 1] = static_cast<unsigned char>(word);
                break;
            case 2: {  // a native number
                const int value = static_cast<int>(word << 16 | word);
                std::memcpy(&bytes[at & ~std::size_t{3}], &value, sizeof value);
                break;
            }
            case 3:
                bytes.resize(at);
                break;
            case 4: {  // a piece twice
                const ByteVector piece(
                    from, from + static_cast<std::ptrdiff_t>(below(bytes.size() - at)));
                bytes.insert(from, piece.begin(), piece.end());
                break;
            }
            default:
                bytes.erase(from,
                            from + static_cast<std::ptrdiff_t>(below(5) % (bytes.size() - at)));
        }
    }
    return bytes;
}

/* Whether a word is among zeros, as in the gaps of a format. */
bool isInGap(const ByteVector& bytes, std::size_t at) {
    if (at < 16 || at + 18 > bytes.size()) {
        return false;
    }
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    return std::all_of(from - 16, from + 18, [](unsigned char b) { return b == 0; });
}

/* Every word that may be a count, a length or a position, set to each boundary value by itself. */
std::vector<ByteVector> boundaryWords(const ByteVector& sound) {
    std::vector<ByteVector> files;
    for (std::size_t at = 0; at + 2 <= sound.size(); at += 2) {
        if (isInGap(sound, at)) {
            continue;
        }
        for (const unsigned word : {0x0000u, 0x0001u, 0x7fffu, 0x8000u, 0xffffu}) {
            ByteVector bytes = sound;
            bytes[at] = static_cast<unsigned char>(word >> 8);
            bytes[at + 1] = static_cast<unsigned char>(word);
            files.push_back(std::move(bytes));
        }
    }
    return files;
}

int openFiles() {
    int n = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", ignored)) {
        (void)entry;
        ++n;
    }
    return n;
}

/* Tens of thousands of files are rewritten: on a disk, waiting for it would take minutes. */
std::filesystem::path memoryDirectory() {
    constexpr const char* kShared = "/dev/shm";
    if (access(kShared, W_OK | X_OK) == 0) {
        return kShared;
    }
    return std::filesystem::temp_directory_path();
}

struct Format {
    const char* name;
    ByteVector (*seed)(const std::string& scratch);
    void (*exercise)(const std::string& path, const std::string& copy);
};

class Damage : public testing::TestWithParam<Format> {
  protected:
    void SetUp() override {
        sound_ = GetParam().seed(dir_.file("seed"));
        openBefore_ = openFiles();
        testing::internal::CaptureStdout();
    }
    void TearDown() override {
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(openFiles(), openBefore_) << "a stream was left open";
    }
    void exercise(const ByteVector& bytes) {
        writeFile(path_, bytes);
        GetParam().exercise(path_, dir_.file("copy"));
    }

    TempDir dir_{memoryDirectory()};
    std::string path_ = dir_.file("damaged");
    ByteVector sound_;
    int openBefore_ = 0;
};

TEST_P(Damage, EveryPrefix) {
    for (std::size_t n = 0; n <= sound_.size(); ++n) {
        exercise(ByteVector(sound_.begin(), sound_.begin() + static_cast<std::ptrdiff_t>(n)));
        ASSERT_FALSE(HasFatalFailure()) << "the first " << n << " bytes";
    }
}

TEST_P(Damage, BoundaryValuesEverywhere) {
    for (const ByteVector& bytes : boundaryWords(sound_)) {
        exercise(bytes);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST_P(Damage, Mutations) {
    std::mt19937 random(20140810);
    for (int i = 0; i < kMutations; ++i) {
        exercise(mutate(sound_, random));
        ASSERT_FALSE(HasFatalFailure()) << "mutation " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, Damage,
    testing::Values(Format{"UniversalFormat", universalFormatSeed, exerciseUniversalFormat},
                    Format{"FieldRecord", fieldRecordSeed, exerciseFieldRecords},
                    Format{"Membership", membershipSeed, exerciseMembership},
                    Format{"Profiles", profilesSeed, exerciseProfiles},
                    Format{"ColumnFile", columnFileSeed, exerciseColumnFile},
                    Format{"NameList", nameListSeed, exerciseNameList},
                    Format{"GridFile", gridFileSeed, exerciseGridFile},
                    Format{"PolarFull", polarSeed2213, exercisePolar},
                    Format{"PolarPacked", polarSeed2211, exercisePolar},
                    Format{"PolarSingle", polarSeedSingle, exercisePolar},
                    Format{"GermanDx", germanDxSeed, exerciseGermanDx}),
    [](const testing::TestParamInfo<Format>& info) { return std::string(info.param.name); });

}  // namespace

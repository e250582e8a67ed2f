/* Files built word by word, as the program sees them. */
#include "scan/formats/read_scan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "clutterclassifier/clutterclassifier.h"
#include "formats/german_dx_bytes.h"
#include "formats/uf_bytes.h"
#include "scan/formats/write_classes.h"
#include "support/temp_dir.h"

namespace {

using testing::HasSubstr;

using clutter::test::kUfMissing;
using clutter::test::TempDir;
using clutter::test::ufFile;
using clutter::test::ufRay;
using clutter::test::UfRecord;

class ReadScan : public ::testing::Test {
  protected:
    scan::Scan read(const clutter::test::ByteVector& bytes) {
        const std::string path = directory_.file("scan");
        clutter::test::writeFile(path, bytes);
        return scan::readScan(path);
    }
    std::string reasonFor(const clutter::test::ByteVector& bytes) {
        try {
            read(bytes);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }
    TempDir directory_;
};

bool hasOddity(const scan::Scan& scan, const std::string& part) {
    for (const std::string& oddity : scan.oddities) {
        if (oddity.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

/* Word positions of a ray. */
constexpr size_t kSweepWord = 10, kAzimuthWord = 33, kElevationWord = 34, kModeWord = 35;

TEST_F(ReadScan, SiteTimeAndFirstGateComeFromTheWords) {
    UfRecord ray = ufRay({{"DZ", {100, 200}}});
    ray.set(21, 36 * 64).set(22, -7).set(23, -15).set(24, -18 * 64).set(25, 99);
    const size_t header = 65;
    ray.set(header + 2, 2).set(header + 3, 125);
    const scan::Scan scan = read(ufFile({ray}));
    EXPECT_EQ(scan.format, "Universal Format");
    EXPECT_NEAR(scan.latitudeDeg, 50 + 30 / 60.0 + 36 / 3600.0, 1e-9);
    EXPECT_NEAR(scan.longitudeDeg, -(7 + 15 / 60.0 + 18 / 3600.0), 1e-9);
    EXPECT_EQ(scan.altitudeM, 99);
    EXPECT_EQ(scan.time.year, 2014);
    EXPECT_TRUE(hasOddity(scan, "two digits: 14, read as 2014"));
    EXPECT_FALSE(scan.hasRadarConstant);
    const scan::Sweep& sweep = scan.sweeps.at(0);
    EXPECT_DOUBLE_EQ(sweep.firstGateM, 2125);
    EXPECT_DOUBLE_EQ(sweep.gateSpacingM, 250);
    EXPECT_DOUBLE_EQ(sweep.azimuthDeg.at(0), 90);
    EXPECT_DOUBLE_EQ(sweep.elevationDeg.at(0), 2);
}

TEST_F(ReadScan, EachRayHasItsOwnScaleLengthAndMissingValue) {
    UfRecord other = ufRay({{"DZ", {30, -5, 7}, 10}, {"PH", {1, 2, 3}, 10}}, 2);
    other.set(45, -5);
    const scan::Scan scan =
        read(ufFile({ufRay({{"DZ", {1234, kUfMissing}}, {"PH", {900, 910}, 10}}), other}));
    const scan::Sweep& sweep = scan.sweeps.at(0);
    ASSERT_EQ(sweep.nrays, 2);
    ASSERT_EQ(sweep.ngates, 3);
    EXPECT_EQ(sweep.rayGates, (std::vector<int>{2, 3}));
    const std::vector<float>& z = sweep.fields.at(0).values;
    EXPECT_FLOAT_EQ(z[0], 12.34F);
    EXPECT_TRUE(std::isnan(z[1]));
    EXPECT_TRUE(std::isnan(z[2]));  // padding
    EXPECT_FLOAT_EQ(z[3], 3);
    EXPECT_TRUE(std::isnan(z[4]));
    EXPECT_FLOAT_EQ(z[5], 0.7F);
    EXPECT_FLOAT_EQ(sweep.fields.at(1).values[1], 91);
    EXPECT_TRUE(hasOddity(scan, "differs from ray to ray (2 to 3)"));
    EXPECT_TRUE(hasOddity(scan, "PH 10"));
}

TEST_F(ReadScan, FieldsAreFoundByNameInEveryRay) {
    const scan::Scan scan = read(
        ufFile({ufRay({{"DZ", {1000}}, {"DR", {50}}}), ufRay({{"DR", {60}}, {"DZ", {2000}}}, 2)}));
    const scan::Sweep& sweep = scan.sweeps.at(0);
    EXPECT_EQ(sweep.fields.at(0).values, (std::vector<float>{10, 20}));
    EXPECT_EQ(sweep.fields.at(1).values, (std::vector<float>{0.5F, 0.6F}));
}

TEST_F(ReadScan, RaysAreGroupedBySweepNumber) {
    std::vector<UfRecord> rays;
    for (int sweep : {1, 1, 2, 2, 2, 1}) {
        rays.push_back(ufRay({{"DZ", std::vector<int>(static_cast<size_t>(2 + sweep), 100)}}));
        rays.back().set(kSweepWord, sweep);
    }
    const scan::Scan scan = read(ufFile(rays));
    ASSERT_EQ(scan.sweeps.size(), 3u);
    EXPECT_EQ(scan.sweeps[0].nrays, 2);
    EXPECT_EQ(scan.sweeps[1].nrays, 3);
    EXPECT_EQ(scan.sweeps[1].ngates, 4);
    EXPECT_EQ(scan.sweeps[2].number, 1);
}

TEST_F(ReadScan, RangeHeightScansAreRecognised) {
    struct Case {
        const char* what;
        int mode, azimuthStep, elevationStep;
        bool rhi;
    };
    const Case cases[] = {
        {"said so", 3, 0, 64, true},
        {"not said, but the elevation moves", 1, 0, 64, true},
        {"plan position", 1, 64, 0, false},
    };
    for (const Case& c : cases) {
        std::vector<UfRecord> rays;
        for (int r = 0; r < 10; ++r) {
            rays.push_back(ufRay({{"DZ", {100}}}));
            rays.back().set(kModeWord, c.mode).set(kAzimuthWord, 6400 + r * c.azimuthStep);
            rays.back().set(kElevationWord, 64 + r * c.elevationStep);
        }
        EXPECT_EQ(read(ufFile(rays)).sweeps.at(0).rhi, c.rhi) << c.what;
    }
}

TEST_F(ReadScan, OddWordsAreSaidOnce) {
    const auto notes = [&](const std::vector<UfRecord>& rays) {
        return read(ufFile(rays)).oddities;
    };
    using Sentences = std::vector<std::string>;
    const std::string year = "The year has two digits: 14, read as 2014.";
    const UfRecord plain = ufRay({{"DZ", {1, 2, 3}}, {"ZD", {1, 2, 3}}});
    EXPECT_EQ(notes({plain}), Sentences{year});
    UfRecord full = plain;
    EXPECT_EQ(notes({full.set(26, 100)}), Sentences{});
    constexpr size_t kSpacing = 67 + 4, kGates = 67 + 5, kSecondHeader = 25, kOptional = 4;
    UfRecord spacing = plain, count = plain, optional = plain;
    spacing.set(kSecondHeader + kSpacing, 125);
    const std::string differs = "The gate spacing differs by field or ray; the first is used.";
    EXPECT_EQ(notes({spacing}), (Sentences{year, differs}));
    EXPECT_EQ(notes({plain, spacing, plain}).at(1), differs);
    count.set(kSecondHeader + kGates, 2);
    EXPECT_EQ(notes({count}).at(1),
              "Fields of a ray differ in their number of gates; each is held with that of the "
              "first.");
    optional.set(kOptional, 61);
    EXPECT_EQ(notes({plain, optional}).at(1), "1 of 2 rays have no optional header.");
    EXPECT_EQ(notes({ufRay({{"DZ", {1, 2}, 10}, {"ZD", {1, 2}}, {"VR", {1, 2}, 99}})}).at(1),
              "Scale factors other than the usual 100: DZ 10, VR 99.");
}

/* dBZ = power + constant + 20 log10(range); the signal is the power above the noise. */
TEST_F(ReadScan, APowerFieldGivesTheCalibration) {
    struct Case {
        int constant, noise;
        bool known;
    };
    for (const Case& c : {Case{7500, -11000, true}, Case{kUfMissing, -11000, false},
                          Case{7500, kUfMissing, false}, Case{0, 0, false}}) {
        UfRecord ray = ufRay({{"DM", {-9000, -8000}}, {"DZ", {100, 200}}});
        const size_t header = 67;
        ray.set(header + 19, c.constant).set(header + 20, c.noise);
        const scan::Scan scan = read(ufFile({ray}));
        ASSERT_EQ(scan.hasRadarConstant, c.known) << c.constant;
        if (c.known) {
            EXPECT_DOUBLE_EQ(scan.radarConstantDb, 35);
        }
    }
}

/* What of the file could not be had; "" for a sound one. */
std::string damageOf(const scan::Scan& scan) {
    std::string all;
    for (const std::string& sentence : scan.damage) {
        all += sentence;
    }
    return all;
}

TEST_F(ReadScan, ACutFileKeepsItsWholeRays) {
    const clutter::test::ByteVector whole = ufFile({ufRay({{"DZ", {1}}}), ufRay({{"DZ", {2}}}, 2)});
    const struct {
        size_t missing;
        int rays;
        const char* damage;
    } kCases[] = {
        {0, 2, ""},
        {1, 2, "ends within the last record's closing length"},
        {4, 2, "ends within the last record's closing length"},
        {5, 1, "bytes after the last whole record were left unread"},
        {whole.size() / 2 - 1, 1, "1 bytes after the last whole record were left unread"},
        {whole.size() / 2, 1, ""},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.missing);
        const scan::Scan scan = read({whole.begin(), whole.end() - row.missing});
        EXPECT_EQ(scan.sweeps.at(0).nrays, row.rays);
        EXPECT_EQ(scan.damage.empty(), *row.damage == 0) << damageOf(scan);
        EXPECT_THAT(damageOf(scan), HasSubstr(row.damage));
    }
}

TEST_F(ReadScan, RecordsThatAreNoRaysAreDamage) {
    UfRecord foreign = ufRay({{"DZ", {2}}}, 2);
    foreign.text(1, "XX");
    const scan::Scan scan = read(ufFile({ufRay({{"DZ", {1}}}), foreign}));
    EXPECT_EQ(damageOf(scan),
              "1 of 2 records do not start with a ray header: their values are meaningless.");
}

TEST_F(ReadScan, FilesThatCannotBeReadSayWhy) {
    struct Case {
        clutter::test::ByteVector bytes;
        const char* reason;
    };
    clutter::test::ByteVector record(2000, 0);
    const std::string identification = "PLUVEK V1.3  \x05\xAC\x1A\xE1\x40\x6F";
    std::copy(identification.begin(), identification.end(), record.begin());
    clutter::test::ByteVector countless = record;
    countless[64] = 200;
    clutter::test::ByteVector cut = record;
    cut[64] = 1;
    cut[20] = cut[24] = 100;
    const Case cases[] = {
        {{}, "is empty"},
        {{'h', 'e', 'l', 'l', 'o'}, "of no known format"},
        {{0, 0, 0, 114, 'U', 'F', 0, 0}, "damaged"},
        {ufFile({ufRay({})}), "holds no fields"},
        {ufFile({ufRay({{"DZ", {}}})}), "holds no gates"},
        {record, "declares 0 records"},
        {countless, "declares 200 records"},
        {cut, "cut short or damaged"},
    };
    for (const Case& c : cases) {
        EXPECT_THAT(reasonFor(c.bytes), HasSubstr(c.reason)) << c.reason << ": ";
    }
    EXPECT_THROW(scan::readScan(directory_.file("absent")), std::runtime_error);
    EXPECT_THROW(scan::readScan(directory_.path()), std::runtime_error);
}

/* A few rays of full length among very many short ones must not be blown up to full length. */
TEST_F(ReadScan, RaysThatDifferTooMuchAreRefused) {
    clutter::test::ByteVector bytes = ufRay({{"DZ", std::vector<int>(30000, 5)}}).framed();
    const clutter::test::ByteVector small = ufRay({{"DZ", {1}}}, 2).framed();
    for (int r = 0; r < 3000; ++r) {
        bytes.insert(bytes.end(), small.begin(), small.end());
    }
    EXPECT_THAT(reasonFor(bytes), HasSubstr("differ too much"));
}

/* Whatever a damaged file yields is either refused or a scan whose parts agree, and can be written
 * back. Meant for the sanitizers. */
TEST_F(ReadScan, DamagedFilesAreRefusedOrConsistent) {
    std::vector<UfRecord> rays;
    for (int r = 0; r < 4; ++r) {
        rays.push_back(ufRay({{"VR", {r, 2, 3}}, {"DZ", {100, 200, 300}}, {"ZD", {5, r}}}, r + 1));
    }
    const clutter::test::ByteVector whole = ufFile(rays);
    const std::string path = directory_.file("damaged");
    std::mt19937 random(17);
    for (int round = 0; round < 3000; ++round) {
        clutter::test::ByteVector bytes = whole;
        for (int change = 0; change <= round % 4; ++change) {
            bytes[random() % bytes.size()] = static_cast<unsigned char>(random());
        }
        if (round % 5 == 0) {
            bytes.resize(random() % bytes.size());
        }
        clutter::test::writeFile(path, bytes);
        std::unique_ptr<Cufrw> words;
        try {
            const scan::Scan scan = scan::readScan(path, words);
            std::vector<float> classes[8];
            std::vector<scan::SweepClasses> all;
            ASSERT_LE(scan.sweeps.size(), 4u);
            for (const scan::Sweep& sweep : scan.sweeps) {
                const auto size = static_cast<size_t>(sweep.nrays * sweep.ngates);
                for (const scan::Field& field : sweep.fields) {
                    ASSERT_EQ(field.values.size(), size);
                }
                classes[all.size()].assign(size, 3.0F);
                all.push_back({&sweep, &classes[all.size()]});
            }
            scan::writeClasses(directory_.file("out.uf"), scan, words.get(), all);
        } catch (const std::runtime_error&) {
            continue;
        }
        EXPECT_NO_THROW(scan::readScan(directory_.file("out.uf"))) << round;
    }
}

void fill(Cpluvek& record, const char* name, int nrays, int ngates) {
    record.nrays = nrays;
    record.ngates = ngates;
    record.coordtype = 0;
    record.firstgate = 4;
    record.gatesize = 250;
    record.colorflag = 255;
    record.nrecords = 2;
    record.latitude = 50.51F;
    std::snprintf(record.name, sizeof record.name, "%s", name);
    record.angles = new float[static_cast<size_t>(nrays) + 1];
    for (int r = 0; r <= nrays; ++r) {
        record.angles[r] = 0.1F * static_cast<float>(r + 1);
    }
    record.data = new float[static_cast<size_t>(nrays * ngates)];
    for (int i = 0; i < nrays * ngates; ++i) {
        record.data[i] = static_cast<float>(i);
    }
}

TEST_F(ReadScan, FieldRecordsBecomeTheFieldsOfOneSweep) {
    Cpluvek records[2];
    fill(records[0], "Zh", 3, 4);
    fill(records[1], "Zdr", 3, 4);
    const std::string path = directory_.file("records");
    ASSERT_EQ(records[0].WriteDataToFile(path.c_str()), 1);
    const scan::Scan scan = scan::readScan(path);
    ASSERT_EQ(scan.sweeps.size(), 1u);
    const scan::Sweep& sweep = scan.sweeps[0];
    EXPECT_EQ(sweep.nrays, 3);
    EXPECT_EQ(sweep.ngates, 4);
    EXPECT_DOUBLE_EQ(sweep.firstGateM, 1000);
    EXPECT_NEAR(sweep.fixedAngleDeg, 0.1 * 57.29578, 1e-4);
    EXPECT_NEAR(sweep.azimuthDeg.at(2), 0.4 * 57.29578, 1e-4);
    ASSERT_EQ(sweep.fields.size(), 2u);
    EXPECT_EQ(sweep.fields[1].name, "Zdr");
    EXPECT_EQ(sweep.fields[1].units, "dB");
    EXPECT_EQ(sweep.fields[1].values[7], 7);
}

/* The library's own conversion has conventions of its own for the site and the first gate. */
TEST_F(ReadScan, FilesOfTheLibraryAreReadByItsConventions) {
    Cpluvek records[2];
    fill(records[0], "Zh", 3, 4);
    fill(records[1], "V", 3, 4);
    Cufrw words;
    ASSERT_EQ(words.pluvek2uf(records), 1);
    std::string path = directory_.file("library.uf");
    ASSERT_EQ(words.write2file(path.data()), 0);
    const scan::Scan scan = scan::readScan(path);
    EXPECT_NEAR(scan.latitudeDeg, 50.51, 1 / 3600.0);
    EXPECT_DOUBLE_EQ(scan.sweeps.at(0).firstGateM, 1000);
    EXPECT_NEAR(scan.sweeps.at(0).fixedAngleDeg, 0.1 * 57.29578, 0.02);
    EXPECT_EQ(scan.sweeps.at(0).fields.at(1).name, "VR");
    EXPECT_EQ(scan.sweeps.at(0).fields.at(0).noEcho, scan::kNoRainDbz);
    EXPECT_FALSE(scan.sweeps.at(0).fields.at(1).noEcho);
}

TEST_F(ReadScan, NoEchoKeepsItsValueWhereThatIsWanted) {
    const std::string path = directory_.file("scan.dx");
    clutter::test::writeFile(path, clutter::test::dxFile(128));
    constexpr size_t kEmpty = 5;
    const scan::Field without = scan::readScan(path).sweeps.at(0).fields.at(0);
    const scan::Scan kept = scan::readScan(path, {.keepNoEcho = true, .oddities = false});
    const scan::Field& with = kept.sweeps.at(0).fields.at(0);
    EXPECT_TRUE(std::isnan(without.values[kEmpty]));
    EXPECT_EQ(with.values[kEmpty], -32.5F);
    EXPECT_EQ(with.noEcho, -32.5F);
    EXPECT_EQ(without.noEcho, with.noEcho);
    for (size_t i = 0; i < with.values.size(); ++i) {
        ASSERT_TRUE(std::isnan(without.values[i]) || without.values[i] == with.values[i]) << i;
    }
}

TEST_F(ReadScan, ReflectivitiesOfRecordsKnowNoEcho) {
    Cpluvek records[2];
    fill(records[0], "Zh", 3, 4);
    fill(records[1], "Zdr", 3, 4);
    records[0].data[6] = scan::kNoRainDbz;
    const std::string path = directory_.file("records");
    ASSERT_EQ(records[0].WriteDataToFile(path.c_str()), 1);
    const scan::Scan scan = scan::readScan(path);
    EXPECT_EQ(scan.sweeps[0].fields[0].noEcho, scan::kNoRainDbz);
    EXPECT_EQ(scan.sweeps[0].fields[0].values[6], scan::kNoRainDbz);
    EXPECT_FALSE(scan.sweeps[0].fields[1].noEcho);
}

}  // namespace

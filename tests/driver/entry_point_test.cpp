/* The entry point against the literal definition, and what it refuses. */
#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "support/directories.h"
#include "support/literal/classification.h"
#include "support/test_scan.h"

namespace {

using clutter::test::TestScan;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<double> classify(TestScan& scan, const char* directory = kMembershipDirectory) {
    std::vector<double> out(
        static_cast<std::size_t>(scan.nrays) * static_cast<std::size_t>(scan.ngates), 99.0);
    clutterclassifier(directory, scan.nrays, scan.ngates, scan.field(0), scan.field(1),
                      scan.field(2), scan.field(3), scan.field(4), scan.field(5), scan.field(6),
                      scan.ranges.data(), scan.azimuths.data(), &scan.elevation, scan.params,
                      out.data());
    return out;
}

/* The same through the context that a host drives by hand. */
std::vector<double> classifyByContext(TestScan& scan) {
    Crres context;
    Cpluvek* records[] = {&context.zhh, &context.zdr, &context.pdp, &context.rhv,
                          &context.vel, &context.ldr, &context.pdf};
    for (int i = 0; i < 7; ++i) {
        copydata(scan.field(i), scan.ranges.data(), scan.azimuths.data(), &scan.elevation,
                 records[i], scan.nrays, scan.ngates, scan.params);
    }
    context.minsnr = static_cast<float>(scan.params[1]);
    std::snprintf(context.mfdir, sizeof context.mfdir, "%s", kMembershipDirectory);
    context.PrecipitationClutterClassification(
        static_cast<short>(static_cast<int>(scan.params[2])));
    return {context.ccl.data, context.ccl.data + scan.nrays * scan.ngates};
}

void roughen(TestScan& scan, unsigned seed) {
    std::mt19937 random(seed);
    for (auto& field : scan.fields) {
        for (double& value : field) {
            if (random() % 40 == 0) {
                value = kNan;
            }
            if (random() % 200 == 0) {
                value = random() % 2 == 0 ? 1e300 : -1e300;
            }
        }
    }
}

struct Size {
    int nrays, ngates;
};

class WholeScan : public testing::TestWithParam<Size> {};

TEST_P(WholeScan, EveryWayGivesTheLiteralClasses) {
    const auto [nrays, ngates] = GetParam();
    std::mt19937 random(9);
    for (int round = 0; round < 12; ++round) {
        TestScan scan =
            clutter::test::makeTestScan(nrays, ngates, static_cast<unsigned>(round), 0.1 * round);
        scan.params[2] = round < 3 ? 255.0 : static_cast<double>(random() % 512);
        if (round % 2 == 1) {
            roughen(scan, static_cast<unsigned>(round));
        }
        if (round % 4 == 2) {
            scan.fields[1 + random() % 6].clear();
        }
        scan.ranges[1] = scan.ranges[0] + 249.9;
        const std::vector<double> expected =
            literal::classifyScan(scan.literal(), kMembershipDirectory);
        ASSERT_EQ(classify(scan), expected) << "round " << round;
        ASSERT_EQ(classifyByContext(scan), expected) << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, WholeScan,
                         testing::Values(Size{1, 1}, Size{1, 7}, Size{2, 5}, Size{3, 4},
                                         Size{5, 33}, Size{7, 129}, Size{40, 300}));

TEST(EntryPoint, RefusedSizesAndNoReflectivityLeaveTheOutput) {
    TestScan scan = clutter::test::makeTestScan(2, 5, 1);
    double out[10] = {99.0};
    for (const auto& [nrays, ngates] : {Size{0, 5}, Size{2, 0}, Size{-1, -1}}) {
        testing::internal::CaptureStdout();
        clutterclassifier("", nrays, ngates, scan.field(0), nullptr, nullptr, nullptr, nullptr,
                          nullptr, nullptr, scan.ranges.data(), scan.azimuths.data(),
                          &scan.elevation, scan.params, out);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "nrays and ngates should be positive!\n");
        EXPECT_EQ(out[0], 99.0);
    }
    scan.fields[0].clear();
    EXPECT_EQ(classify(scan), std::vector<double>(10, 99.0));
}

TEST(EntryPoint, WithoutMembershipFilesOnlyNoiseIsSeparated) {
    TestScan scan = clutter::test::makeTestScan(6, 100, 2);
    std::vector<double> noise = literal::classifyScan(scan.literal(), kMembershipDirectory);
    for (double& cls : noise) {
        cls = cls == 3.0 ? 3.0 : 0.0;
    }
    for (const std::string& directory : {std::string("/nowhere/"), std::string(5000, 'd')}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(classify(scan, directory.c_str()), noise);
        const std::string message = testing::internal::GetCapturedStdout();
        EXPECT_EQ(message.rfind("Membership function not found: ", 0), 0u);
        EXPECT_EQ(std::count(message.begin(), message.end(), '\n'), 1);
    }
    scan.params[2] = 0.0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(classify(scan, "/nowhere/"), noise) << "no input, no file";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    scan.params[2] = 255.0;
    scan.params[1] = 1e9;
    testing::internal::CaptureStdout();
    EXPECT_EQ(classify(scan, "/nowhere/"), std::vector<double>(600, 3.0)) << "nothing to classify";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(EntryPoint, RatioEqualToTheThresholdIsAnEcho) {
    TestScan scan = clutter::test::makeTestScan(1, 9, 3);
    scan.ranges = {0.0, 1000.0};
    scan.params[0] = 0.0;
    scan.params[2] = 0.0;
    scan.fields[0].assign(9, 26.0);  // at 1 km the range loss is 0 dB
    const std::vector<double> out = classify(scan);
    EXPECT_EQ(out[0], 0.0) << "gate 0 is placed one spacing out";
    EXPECT_EQ(out[1], 0.0);
    EXPECT_EQ(out[2], 3.0);
}

/* The last rays see ray 0 again, after its classes were written. */
TEST(EntryPoint, OutputMayReplaceAnInput) {
    std::mt19937 random(11);
    TestScan scan = clutter::test::makeTestScan(4, 1000, 5);
    for (auto& field : scan.fields) {
        for (double& value : field) {
            value *= 1.0 + 1e-3 * static_cast<double>(random() % 300);
        }
    }
    scan.params[1] = -100.0;
    scan.params[2] = 15.0;
    TestScan apart = scan;
    const std::vector<double> expected = classify(apart);
    for (std::size_t i = 0; i < std::size(scan.fields); ++i) {
        TestScan over = scan;
        clutterclassifier(kMembershipDirectory, over.nrays, over.ngates, over.field(0),
                          over.field(1), over.field(2), over.field(3), over.field(4), over.field(5),
                          over.field(6), over.ranges.data(), over.azimuths.data(), &over.elevation,
                          over.params, over.fields[i].data());
        EXPECT_TRUE(over.fields[i] == expected) << "field " << i;
    }
}

TEST(EntryPoint, ConcurrentCallsAreIndependent) {
    std::vector<TestScan> scans;
    std::vector<std::vector<double>> expected;
    for (unsigned i = 0; i < 4; ++i) {
        scans.push_back(clutter::test::makeTestScan(30, 200, i));
        expected.push_back(classify(scans.back()));
    }
    std::vector<std::vector<double>> results(scans.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < scans.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 5; ++round) {
                results[i] = classify(scans[i]);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results, expected);
}

TEST(CopyData, FillsARecordAndReplacesWhatItHeld) {
    TestScan scan = clutter::test::makeTestScan(3, 4, 4);
    scan.ranges = {100.0, 349.9};
    Cpluvek record;
    record.firstgate = 12;
    for (int round = 0; round < 2; ++round) {
        copydata(scan.field(1), scan.ranges.data(), scan.azimuths.data(), &scan.elevation, &record,
                 3, 4, scan.params);
    }
    EXPECT_EQ(record.nrays, 3);
    EXPECT_EQ(record.ngates, 4);
    EXPECT_EQ(record.gatesize, 249.0f) << "truncated to whole metres";
    EXPECT_EQ(record.coordtype, 0);
    EXPECT_EQ(record.radarconst, 40.0f);
    EXPECT_EQ(record.minsnr, 26.0f);
    EXPECT_EQ(record.nrecords, 1);
    EXPECT_EQ(record.nsets, 1);
    EXPECT_EQ(record.firstgate, 12);
    EXPECT_EQ(record.angles[0], 0.5f);
    EXPECT_EQ(record.angles[3], static_cast<float>(scan.azimuths[2]));
    EXPECT_EQ(record.data[11], static_cast<float>(scan.fields[1][11]));
    const float* before = record.data;
    copydata(nullptr, nullptr, nullptr, nullptr, &record, 9, 9, nullptr);
    EXPECT_EQ(record.data, before);
}

}  // namespace

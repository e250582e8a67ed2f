/* The comma-separated table of a polar record. */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>

#include "clutterclassifier/Cpluvek.h"
#include "support/polar_record.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::fillPolar;
using clutter::test::TempDir;

std::string textOf(const std::string& path) {
    const auto bytes = clutter::test::readFile(path);
    return std::string(bytes.begin(), bytes.end());
}

struct Outcome {
    int result;
    std::string printed;
};

Outcome save(Cpluvek& record, const char* file) {
    testing::internal::CaptureStdout();
    const int result = record.SavePolarData2Ascii(file);
    return {result, testing::internal::GetCapturedStdout()};
}

TEST(CsvExport, OneLineAGateOneColumnARay) {
    TempDir dir;
    const std::string path = dir.file("table.csv");
    Cpluvek record;
    fillPolar(record, 2, 3, 125.0f);
    record.angles[2] = 1.5707964f;
    record.data[1] = std::numeric_limits<float>::quiet_NaN();
    record.data[5] = -32.456f;
    const Outcome outcome = save(record, path.c_str());
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.printed, "Saving results to " + path + "\n");
    EXPECT_EQ(textOf(path),
              "range/angle,0.0,90.0,\n"
              "0.00,0.00,100.00,\n"
              "0.12,nan,101.00,\n"
              "0.25,2.00,-32.46,\n");
}

/* Azimuths and ranges half-way between two last digits: how they were rounded to single precision
 * on their way decides. */
TEST(CsvExport, EveryNumberAsThePrintRoutinesWriteIt) {
    constexpr int kRays = 400, kGates = 300;
    TempDir dir;
    const std::string path = dir.file("table.csv");
    Cpluvek record;
    fillPolar(record, kRays, kGates, 5.0f);
    for (int r = 0; r < kRays; ++r) {
        record.angles[1 + r] = static_cast<float>((0.1 * r + 0.05) * std::acos(-1.0) / 180.0);
    }
    for (int i = 0; i < kRays * kGates; ++i) {
        record.data[i] = std::sin(static_cast<float>(i)) * 1e5f;
    }
    ASSERT_EQ(save(record, path.c_str()).result, 1);
    std::string expected = "range/angle,";
    char number[64];
    const auto append = [&](const char* format, double value) {
        std::snprintf(number, sizeof number, format, value);
        expected += number;
    };
    for (int r = 0; r < kRays; ++r) {
        append("%1.1f,", (180 * record.angles[1 + r]) / std::acos(-1.0));
    }
    expected += "\n";
    for (int g = 0; g < kGates; ++g) {
        append("%1.2f,", g * record.gatesize / 1000);
        for (int r = 0; r < kRays; ++r) {
            append("%1.2f,", record.data[r * kGates + g]);
        }
        expected += "\n";
    }
    EXPECT_TRUE(textOf(path) == expected);
}

TEST(CsvExport, TheDefaultNameIsDateAndQuantity) {
    TempDir dir;
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    Cpluvek record;
    fillPolar(record, 1, 1);
    record.year = 2010;
    record.month = 5;
    record.day = 3;
    record.hour = 4;
    record.minute = 5;
    record.second = 6;
    std::strcpy(record.name, "DZ");
    const Outcome outcome = save(record, nullptr);
    EXPECT_TRUE(std::filesystem::exists("20100503040506_DZ.csv"));
    std::filesystem::remove("20100503040506_DZ.csv");
    std::filesystem::create_directory("20100503040506_DZ.csv");
    const Outcome failed = save(record, nullptr);
    std::filesystem::current_path(before);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.printed, "Saving results to 20100503040506_DZ.csv\n");
    EXPECT_EQ(failed.result, 0);
    EXPECT_EQ(failed.printed,
              "Saving results to 20100503040506_DZ.csv\nCould not create output file (null) \n");
}

TEST(CsvExport, RefusesWhatIsNoPolarRecord) {
    TempDir dir;
    const std::string path = dir.file("table.csv");
    Cpluvek empty, cartesian, withoutAngles;
    empty.coordtype = 0;
    fillPolar(cartesian, 1, 1);
    cartesian.coordtype = 2;
    fillPolar(withoutAngles, 1, 1);
    delete[] withoutAngles.angles;
    withoutAngles.angles = nullptr;
    for (Cpluvek* record : {&empty, &cartesian, &withoutAngles}) {
        const Outcome outcome = save(*record, path.c_str());
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.printed, "Invalid data file \n");
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    Cpluvek record;
    fillPolar(record, 1, 1);
    const std::string nowhere = dir.file("none/table.csv");
    const Outcome outcome = save(record, nowhere.c_str());
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.printed,
              "Saving results to " + nowhere + "\nCould not create output file " + nowhere + " \n");
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(save(record, "/dev/full").result, 0);
    }
}

}  // namespace

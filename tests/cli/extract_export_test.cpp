/* Values at points, and fields as tables, grids and numbers: what the program writes. */
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "formats/uf_bytes.h"
#include "run_program.h"
#include "scan/points/samples.h"
#include "support/temp_dir.h"

namespace {

using testing::HasSubstr;

namespace fs = std::filesystem;
using clutter::test::ByteVector;
using clutter::test::TempDir;

constexpr int kRays = 36, kGates = 20;

/* A ray every 10 degrees from 5, gates of 250 m centred at 2000 m, 2250 m, ...: DZ is the ray, VR
 * the gate. */
ByteVector scanFile() {
    std::vector<clutter::test::UfRecord> rays;
    for (int r = 0; r < kRays; ++r) {
        std::vector<int> ray, gates;
        for (int g = 0; g < kGates; ++g) {
            ray.push_back(100 * r);
            gates.push_back(100 * g);
        }
        rays.push_back(clutter::test::ufRay({{"DZ", ray}, {"VR", gates}}, r + 1));
        rays.back().set(33, (5 + 10 * r) * 64);
    }
    return clutter::test::ufFile(rays);
}

class Files : public testing::Test {
  protected:
    void SetUp() override {
        scan_ = dir_.file("scan.uf");
        clutter::test::writeFile(scan_, scanFile());
        grid_ = dir_.file("grid.plv");
        writeGrid();
    }
    /* 3 columns to the east, 2 rows to the north, 100 m, from (1000, 2000): 10 x column + row. */
    void writeGrid(const char* name = "RATE") {
        Cpluvek record;
        record.nrays = 3;
        record.ngates = 2;
        record.nrecords = 1;
        record.coordtype = 2;
        record.firstgate = record.recindex = 0;
        record.colorflag = 255;
        record.gatesize = 100.0f;
        record.year = 2014;
        const float limits[6] = {1000, 1300, 100, 2000, 2200, 100};
        std::copy(limits, limits + 6, record.axislimits);
        std::strcpy(record.name, name);
        record.data = new float[6]{0, 1, 10, 11, 20, NAN};
        record.angles = new float[4]{};
        ASSERT_EQ(record.WriteDataToFile(grid_.c_str()), 1);
    }
    std::string points(const std::string& text) {
        const std::string path = dir_.file("points.txt");
        clutter::test::writeFile(path, ByteVector(text.begin(), text.end()));
        return path;
    }
    static std::string textOf(const std::string& path) {
        const ByteVector bytes = clutter::test::readFile(path);
        return std::string(bytes.begin(), bytes.end());
    }

    TempDir dir_;
    std::string scan_, grid_;
};

TEST_F(Files, ExtractTakesTheNearestGateAroundTheCircle) {
    struct Case {
        const char* point;
        const char* values;
    };
    // Gates reach half a spacing to either side of their centres.
    const Case cases[] = {{"3000 5", "0,4"},       {"3100 5", "0,4"},      {"3130 5", "0,5"},
                          {"2000 14.9", "1,0"},    {"2500 359.9", "35,2"}, {"2500 0.1", "0,2"},
                          {"2500 -3", "35,2"},     {"2500 365", "0,2"},    {"6874 175", "17,19"},
                          {"6876 175", "nan,nan"}, {"1874 175", "nan,nan"}};
    std::string list, expected = "range,azimuth,DZ,VR\n";
    for (const Case& c : cases) {
        list += std::string(c.point) + "\n";
        std::string point = c.point;
        point[point.find(' ')] = ',';
        expected += point + "," + c.values + "\n";
    }
    const Outcome outcome = runProgram("extract " + scan_ + " " + points(list));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, expected);
}

TEST_F(Files, ExtractTurnsMapPointsIntoRangeAndAzimuth) {
    // East, south-west and north-west of a radar at (10000, 20000).
    const std::string list = points("13000 20000\n7878.5 17878.5\n9999 23000\n");
    const Outcome outcome =
        runProgram("extract " + scan_ + " " + list + " --map --origin 10000,20000");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "x,y,DZ,VR\n13000,20000,8,4\n7878.5,17878.5,22,4\n9999,23000,35,4\n");
    const scan::Points polar = scan::polarFromMap({{0.0f}, {-1000.0f}}, 0, 0, 60);
    EXPECT_NEAR(polar.first[0], 2000, 0.01);
    EXPECT_NEAR(polar.second[0], 180, 1e-4);
}

TEST_F(Files, SectorsHaveNoValuesOutside) {
    scan::Scan scan;
    scan::Sweep sweep;
    sweep.nrays = 21;
    sweep.ngates = 1;
    sweep.gateSpacingM = 1000;
    for (int r = 0; r < 21; ++r) {
        sweep.azimuthDeg.push_back((350 + r) % 360);
    }
    sweep.elevationDeg.assign(21, 0.0);
    scan::Field field{"DZ", "dBZ", {}};
    for (int r = 0; r < 21; ++r) {
        field.values.push_back(static_cast<float>(r));
    }
    sweep.fields = {field};
    const scan::Points at{std::vector<float>(6, 100.0f), {350, 359.6f, 0, 10.9f, 12, 180}};
    const std::vector<float> values = scan::sampleSweep(scan, sweep, at, {"dz"}).columns[0];
    EXPECT_EQ(std::vector<float>(values.begin(), values.begin() + 4),
              (std::vector<float>{0, 10, 10, 20}));
    EXPECT_TRUE(std::isnan(values[4]) && std::isnan(values[5]));
    sweep.rhi = true;
    EXPECT_THROW(scan::sampleSweep(scan, sweep, at, {}), std::runtime_error);
}

TEST_F(Files, ExtractFromAGridTakesCells) {
    const std::string list = points("1050 2050\n1250 2099\n1250 2150\n999 2050\n1050 2200\n");
    const Outcome outcome = runProgram("extract " + grid_ + " " + list + " --fields rate");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out,
              "x,y,RATE\n1050,2050,0\n1250,2099,20\n1250,2150,nan\n999,2050,nan\n1050,2200,nan\n");
}

TEST_F(Files, PointsAreTwoNumbersALine) {
    const scan::Points points = scan::readPoints(this->points(" 1e3\t-2.5\r\n\n \n0 7"));
    EXPECT_EQ(points.first, (std::vector<float>{1000, 0}));
    EXPECT_EQ(points.second, (std::vector<float>{-2.5, 7}));
    for (const char* line : {"1", "1 2 3", "range azimuth", "1 2km", "1 nan", "inf 1", "1 1e39"}) {
        const std::string list = this->points(std::string("1 2\n") + line + "\n3 4\n");
        try {
            scan::readPoints(list);
            ADD_FAILURE() << line;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "line 2: two numbers are expected") << line;
        }
    }
    for (const std::string& endless :
         {this->points(std::string(1 << 16, ' ')), std::string("/dev/zero")}) {
        EXPECT_EQ(runProgram("extract " + scan_ + " " + endless).out,
                  "clutterclassifier: " + endless + ": line 1: is too long\n");
    }
}

TEST_F(Files, NamesOfColumnsAreQuotedWhereTheyMust) {
    writeGrid("\"R\", mm/h");
    const Outcome outcome = runProgram("extract " + grid_ + " " + points("1050 2050\n"));
    EXPECT_EQ(outcome.out, "x,y,\"\"\"R\"\", mm/h\"\n1050,2050,0\n");
}

TEST_F(Files, ExtractWritesAColumnFileThatReadsBack) {
    const std::string list = points("3000 15\n2250 95\n");
    std::string out = dir_.file("values.dat");
    const Outcome outcome = runProgram("extract " + scan_ + " " + list + " --fields VR -o " + out);
    EXPECT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_EQ(outcome.out, "");
    CDSP dsp;
    unsigned* times = nullptr;
    float* cells = nullptr;
    int rows = 0, columns = 0;
    dsp.LoadDataFromFile(out.data(), &times, &cells, rows, columns, -1.0f);
    ASSERT_EQ(rows, 2);
    ASSERT_EQ(columns, 3);
    EXPECT_EQ(std::vector<float>(cells, cells + 6), (std::vector<float>{3000, 2250, 15, 95, 4, 1}));
    delete[] times;
    delete[] cells;
    ASSERT_EQ(runProgram("extract " + scan_ + " " + list + " -o " + out + ".csv").code, 0);
    EXPECT_EQ(textOf(out + ".csv"), "range,azimuth,DZ,VR\n3000,15,1,4\n2250,95,9,1\n");
}

TEST_F(Files, ExportWritesTableGridAndNumbers) {
    const std::string table = dir_.file("t.csv"), raw = dir_.file("r.bin"),
                      grid = dir_.file("g.asc");
    const Outcome outcome = runProgram("export " + scan_ + " --field VR -o " + table);
    EXPECT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_EQ(outcome.out, "");
    const std::string text = textOf(table);
    EXPECT_EQ(text.substr(0, 29), "range/angle,5.0,15.0,25.0,35.");
    EXPECT_THAT(text, HasSubstr("\n0.25,1.00,1.00,"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), kGates + 1);

    ASSERT_EQ(runProgram("export " + scan_ + " -o " + raw).code, 0);
    const ByteVector bytes = clutter::test::readFile(raw);
    ASSERT_EQ(bytes.size(), kRays * kGates * sizeof(float));
    float value = 0.0f;
    std::memcpy(&value, &bytes[35 * kGates * sizeof(float)], sizeof value);
    EXPECT_EQ(value, 35.0f);  // the reflectivity, without being asked for

    ASSERT_EQ(runProgram("export " + grid_ + " -o " + grid).code, 0);
    EXPECT_EQ(textOf(grid),
              "ncols\t\t3\nnrows\t\t2\nxllcorner\t1000.00\nyllcorner\t2000.00\ncellsize\t100.00\n"
              "nodata_value\t-9999\n 1.00 11.00 -9999.00\n 0.00 10.00 20.00\n");
    ASSERT_EQ(runProgram("export " + grid_ + " --format bin -o " + raw).code, 0);
    EXPECT_EQ(fs::file_size(raw), 24u);
}

TEST_F(Files, WhatCannotBeDoneIsReportedInOneLine) {
    const std::string list = points("1000 15\n");
    const std::string empty = dir_.file("empty.txt");
    clutter::test::writeFile(empty, {});
    const std::string one = dir_.file("one.txt");
    clutter::test::writeFile(one, {'7', '\n'});
    const std::string out = dir_.file("out");
    const auto before = std::distance(fs::directory_iterator(dir_.path()), {});
    expectRefusals({
        {"extract " + scan_ + " " + empty, 1, "empty.txt: holds no points"},
        {"extract " + scan_ + " " + one, 1, "one.txt: line 1: two numbers"},
        {"extract " + scan_ + " " + dir_.file("none"), 1, "none: No such file or directory"},
        {"extract " + scan_ + " " + dir_.path(), 1, "cannot be read"},
        {"extract " + dir_.file("none.uf") + " " + list, 1, "none.uf: No such file"},
        {"extract " + scan_ + " " + list + " --fields XX", 1, "has no field XX among: DZ VR"},
        {"extract " + scan_ + " " + list + " --sweep 9", 1, "has no sweep number 9"},
        {"extract " + scan_ + " " + list + " --layout 252", 2, "--layout"},
        {"extract " + scan_ + " " + list + " --map --origin nan,2", 2,
         "nan is not a finite number"},
        {"extract " + scan_ + " " + list + " --map --origin 0,1e400", 2,
         "too large for single precision"},
        {"export " + scan_ + " --layout 260 -o " + out + ".csv", 2, "--layout"},
        {"extract " + scan_ + " " + list + " -o " + list, 2, "would overwrite"},
        {"extract " + scan_ + " " + list + " --origin 1,2", 2, "--map"},
        {"extract " + grid_ + " " + list + " --map --origin 1,2", 2, "--origin"},
        {"extract " + grid_ + " " + list + " --sweep 1", 2, "a grid has no sweeps"},
        {"extract " + grid_ + " " + list + " --layout 260", 2, "--layout"},
        {"export " + grid_ + " --sweep 1 -o " + out + ".asc", 2, "a grid has no sweeps"},
        {"export " + grid_ + " --layout 260 -o " + out + ".asc", 2, "--layout"},
        {"export " + scan_ + " -o " + out + ".asc", 1, "needs a Cartesian record"},
        {"export " + grid_ + " -o " + out + ".csv", 1, "a table needs a scan"},
        {"export " + grid_ + " --field XX -o " + out + ".asc", 1, "has no field XX among: RATE"},
        {"export " + scan_ + " -o " + out + ".xyz", 2, "must end in"},
        {"export " + scan_ + " --format csv -o " + scan_, 2, "would overwrite"},
        {"export " + scan_ + " -o " + dir_.file("none/out.csv"), 1, "there is no directory"},
    });
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_.path()), {}), before);
}

}  // namespace

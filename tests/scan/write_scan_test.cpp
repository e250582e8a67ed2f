/* What a scan in memory becomes in a file, word by word, down to a single gate. */
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/formats/polar/write_polar.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/uf/write_uf.h"
#include "scan/formats/writing/output_file.h"
#include "support/temp_dir.h"

namespace scan {
namespace {

/* One ray of this many gates, with everything that a file may say of it. */
Scan smallScan(int ngates) {
    Scan scan;
    scan.radarName = "RADAR";
    scan.latitudeDeg = 50.5;
    scan.longitudeDeg = -7.25;
    scan.altitudeM = 99;
    scan.beamWidthDeg = 1;
    scan.wavelengthM = 0.05;
    scan.operation = {150, 3, 1000, 30};
    scan.time = {2014, 8, 10, 18, 20, 5};
    Sweep sweep;
    sweep.number = 4;
    sweep.fixedAngleDeg = 1.5;
    sweep.azimuthDeg = {270};
    sweep.elevationDeg = {1.5};
    sweep.nrays = 1;
    sweep.ngates = ngates;
    sweep.gateSpacingM = 250;
    sweep.firstGateM = 1250;
    sweep.fields = {{"DZ", "dBZ", std::vector<float>(ngates, 12.34f), 100}};
    scan.sweeps = {sweep};
    return scan;
}

std::string writeWords(const clutter::test::TempDir& directory, const Scan& scan) {
    OutputFile file(directory.file("scan.uf"));
    writeUniversalFormat(file, scan, nullptr);
    file.commit();
    return directory.file("scan.uf");
}

TEST(WriteScan, UniversalFormatHoldsTheseWords) {
    const clutter::test::TempDir directory;
    const clutter::test::ByteVector bytes =
        clutter::test::readFile(writeWords(directory, smallScan(3)));
    std::vector<int> words;
    for (std::size_t i = 4; i + 5 < bytes.size(); i += 2) {
        words.push_back(static_cast<std::int16_t>(bytes[i] << 8 | bytes[i + 1]));
    }
    for (const int today : {38, 39, 40}) {
        words.at(today - 1) = 0;
    }
    constexpr int kNone = -32768;
    const auto two = [](const char* letters) { return letters[0] << 8 | letters[1]; };
    const int ra = two("RA"), da = two("DA"), r = two("R "), blank = two("  ");
    EXPECT_EQ(words,
              (std::vector<int>{
                  two("UF"), 86, 46, 60, 60, 1, 1, 1, 1, 1, ra, da, r, blank, blank, blank, blank,
                  blank, 50, 30, 0, -7, -15, 0, 99, 2014, 8, 10, 18, 20, 5, two("UT"), 270 * 64, 96,
                  1, 96, 1152, 0, 0, 0, two("CL"), two("UT"), two("CL"), two("AS"), kNone,
                  // Optional header: project, baseline, start, tape, flag.
                  ra, da, r, blank, 270 * 64, 96, 18, 20, 5, ra, da, r, blank, 1,
                  // Data header, then that of the field and its three gates.
                  1, 1, 1, two("DZ"), 65, 84, 100, 1, 250, 250, 3, 150, 64, 64, kNone, 1, 320,
                  kNone, blank, kNone, kNone, two("--"), 1000, 16, 1234, 1234, 1234}));
}

TEST(WriteScan, ASingleGateIsAScan) {
    const clutter::test::TempDir directory;
    const Scan scan = smallScan(1);
    OutputFile record(directory.file("scan.plv"));
    writeRecords(record, scan, scan.sweeps[0], scan.sweeps[0].fields);
    record.commit();
    for (const std::string& path : {writeWords(directory, scan), directory.file("scan.plv")}) {
        const Sweep sweep = readScan(path).sweeps.at(0);
        EXPECT_EQ(sweep.ngates, 1);
        EXPECT_EQ(sweep.fields.at(0).values, std::vector<float>{12.34f}) << path;
        EXPECT_EQ(sweep.firstGateM, 1250);
    }
    Cpluvek held;
    ASSERT_EQ(held.ReadDataFromFile(directory.file("scan.plv").c_str()), 1);
    const std::vector<float> limits(held.axislimits, held.axislimits + 6);
    EXPECT_EQ(limits, (std::vector<float>{-250, 250, 100, -250, 250, 100}));
}

/* The header has words of 16 bits without a sign, each of its own unit. */
TEST(WriteScan, PolarDataNoteEveryNumberThatTheirHeaderCannotHold) {
    const clutter::test::TempDir directory;
    const auto notesOf = [&](Scan scan) {
        OutputFile file(directory.file("scan.pol"));
        return writePolarData(file, scan, scan.sweeps[0], scan.sweeps[0].fields[0], 1814);
    };
    Scan small = smallScan(2);
    small.longitudeDeg = 7.25;
    small.hasRadarConstant = true;
    small.radarConstantDb = 40;
    EXPECT_EQ(notesOf(small), std::vector<std::string>{});
    const struct {
        const char* what;
        double highest;
        void (*set)(Scan& scan, double value);
    } kWords[] = {
        {"longitude", 360, [](Scan& scan, double value) { scan.longitudeDeg = value; }},
        {"latitude", 90, [](Scan& scan, double value) { scan.latitudeDeg = value; }},
        {"height", 65535, [](Scan& scan, double value) { scan.altitudeM = value; }},
        {"radar constant", 6553.5, [](Scan& scan, double value) { scan.radarConstantDb = value; }},
        {"wavelength", 65.535, [](Scan& scan, double value) { scan.wavelengthM = value; }},
        {"beam width", 655.35, [](Scan& scan, double value) { scan.beamWidthDeg = value; }},
        {"pulse length", 65535,
         [](Scan& scan, double value) { scan.operation.pulseLengthM = static_cast<float>(value); }},
        {"rate of turn", 182,
         [](Scan& scan, double value) {
             scan.operation.turnsPerMinute = static_cast<float>(value);
         }},
        {"number of pulses", 65535,
         [](Scan& scan, double value) { scan.operation.pulsesPerRay = static_cast<float>(value); }},
        {"pulse repetition", 65535,
         [](Scan& scan, double value) {
             scan.operation.pulsesPerSecond = static_cast<float>(value);
         }},
        {"Nyquist velocity", 655.35,
         [](Scan& scan, double value) { scan.sweeps[0].nyquist = value; }},
    };
    for (const auto& word : kWords) {
        for (const auto& [share, fits] : {std::pair{-0.1, false}, {0.99, true}, {1.01, false}}) {
            Scan scan = small;
            word.set(scan, share * word.highest);
            const std::vector<std::string> notes = notesOf(scan);
            EXPECT_EQ(notes.size(), fits ? 0u : 1u) << word.what << " " << share;
            if (!notes.empty()) {
                EXPECT_NE(notes[0].find(word.what), std::string::npos) << notes[0];
            }
        }
    }
}

}  // namespace
}  // namespace scan

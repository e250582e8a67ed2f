/* program_scan.h - a scan of rain, clutter and noise in a directory of its own, for the program. */
#ifndef CLUTTER_TESTS_CLI_PROGRAM_SCAN_H
#define CLUTTER_TESTS_CLI_PROGRAM_SCAN_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "formats/uf_bytes.h"
#include "support/directories.h"
#include "support/temp_dir.h"

namespace clutter::test {

constexpr int kRays = 60, kGates = 240;

enum Truth { kRain, kClutter, kNoiseTruth };

inline Truth truthAt(int ray, int gate) {
    if (ray >= 10 && ray < 30 && gate >= 60 && gate < 160) {
        return kRain;
    }
    if (ray >= 40 && ray < 50 && gate >= 60 && gate < 160) {
        return kClutter;
    }
    return kNoiseTruth;
}

/* A ray of rain, clutter and noise 30 dB below 0 dBZ at 1 km, in hundredths. */
inline std::vector<UfField> makeFields(int ray, std::mt19937& random, int gates) {
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    std::vector<UfField> fields = {{"DZ", {}}, {"DR", {}}, {"PH", {}}, {"RH", {}}};
    for (int g = 0; g < gates; ++g) {
        const Truth truth = truthAt(ray, g);
        const double noise = -30 + 20 * std::log10(std::max(g, 1) * 0.25) + normal(random);
        const bool rain = truth == kRain;
        const double z = truth == kNoiseTruth ? noise : 35 + (rain ? 1 : 9) * normal(random);
        const double values[] = {
            z, rain ? 1 + 0.2 * normal(random) : 4 * normal(random),
            rain ? 60 + normal(random) : 300 * uniform(random) - 150,
            rain ? 0.99 + 0.002 * normal(random) : 0.4 + 0.6 * uniform(random)};
        for (size_t f = 0; f < fields.size(); ++f) {
            fields[f].words.push_back(static_cast<int>(std::lround(100 * values[f])));
        }
    }
    return fields;
}

inline std::vector<UfRecord> makeRays(int sweep = 1) {
    std::mt19937 random(11);
    std::vector<UfRecord> rays;
    for (int r = 0; r < kRays; ++r) {
        rays.push_back(ufRay(makeFields(r, random, kGates), r + 1));
        rays.back().set(10, sweep).set(33, r * 64 * 360 / kRays);
    }
    return rays;
}

class ProgramOnAScan : public testing::Test {
  protected:
    void SetUp() override {
        setenv("CLUTTERCLASSIFIER_MEMBERSHIP", kMembershipDirectory, 1);
        scan_ = directory_.file("scan.uf");
        writeFile(scan_, ufFile(makeRays()));
    }
    void TearDown() override { unsetenv("CLUTTERCLASSIFIER_MEMBERSHIP"); }

    std::string volume() {
        std::vector<UfRecord> rays = makeRays(1);
        for (const UfRecord& ray : makeRays(2)) {
            rays.push_back(ray);
        }
        const std::string path = directory_.file("volume.uf");
        writeFile(path, ufFile(rays));
        return path;
    }
    std::vector<std::string> filesIn(const std::string& path) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    TempDir directory_;
    std::string scan_;
};

}  // namespace clutter::test

#endif

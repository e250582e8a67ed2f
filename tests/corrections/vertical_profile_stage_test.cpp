/* The stage that corrects a scan by vertical profiles. */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "support/bits.h"
#include "support/literal/corrections.h"
#include "support/profile_files.h"
#include "support/scan_context.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::fieldOf;
using clutter::test::fillContext;
using clutter::test::makeRainScan;
using clutter::test::sameBits;
using literal::PolarScan;

constexpr float kBeamwidth = 0.0175f;

PolarScan meltingScan() {
    PolarScan scan = makeRainScan(4, 150, 12);
    scan.elevation = 0.035f;
    scan.zhh[7] = -9999.0f;
    scan.zhh[8] = 1e-9f;
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        scan.fzl[i] = 900.0f + 300.0f * static_cast<float>(i / 150);
    }
    return scan;
}

std::vector<float> roundTrip(const literal::Values& z) {
    std::vector<float> dbz;
    for (const double value : z) {
        dbz.push_back(static_cast<float>(10.0 * std::log10(value)));
    }
    return dbz;
}

TEST(ProfileStage, SameBitsAsThePlainDefinition) {
    clutter::test::TempDir directory;
    clutter::test::writeProfiles(directory.file("profiles"));
    const PolarScan scan = meltingScan();
    Crres c;
    fillContext(c, scan);
    c.zhh.beamwidth = kBeamwidth;
    std::snprintf(c.vprfile, sizeof c.vprfile, "%s", directory.file("profiles").c_str());

    double* library = nullptr;
    int profiles = 0, levels = 0, reference = 0;
    double step = 0.0;
    ASSERT_EQ(c.radarpro.GetVPR(&library, profiles, levels, reference, step, c.vprfile, 0), 1);
    const literal::Values values(library, library + profiles * levels);
    delete[] library;
    std::vector<float> expected(scan.cells());
    int changed = 0;
    for (std::size_t r = 0; r < 4; ++r) {
        literal::Values z, range, freezing;
        for (std::size_t g = 0; g < 150; ++g) {
            z.push_back(std::pow(10.0, 0.1 * static_cast<double>(scan.zhh[r * 150 + g])));
            range.push_back(static_cast<double>(g) * 250.0);
            freezing.push_back(static_cast<double>(scan.fzl[r * 150 + g]));
        }
        const std::vector<float> ray =
            roundTrip(literal::matchProfiles(z, range, freezing, static_cast<double>(0.035f),
                                             static_cast<double>(kBeamwidth), values));
        for (std::size_t g = 0; g < 150; ++g) {
            expected[r * 150 + g] = ray[g];
            changed += std::fabs(ray[g] - scan.zhh[r * 150 + g]) > 0.01f ? 1 : 0;
        }
    }
    ASSERT_GT(changed, 50);
    c.VPRCorrection();
    EXPECT_TRUE(sameBits(fieldOf(c.zhh), expected));
}

TEST(ProfileStage, WithoutProfilesOrInputsNothingIsCorrected) {
    const PolarScan scan = meltingScan();
    Crres c;
    fillContext(c, scan);
    c.fzl.nrays = 3;
    c.VPRCorrection();
    EXPECT_TRUE(sameBits(fieldOf(c.zhh), scan.zhh)) << "too few freezing levels";
    c.fzl.nrays = 4;
    c.VPRCorrection();
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        const float expected = i == 7 ? -HUGE_VALF : i == 8 ? c.zhh.data[8] : scan.zhh[i];
        EXPECT_EQ(c.zhh.data[i], expected) << "only converted, there and back: " << i;
    }
    Crres().VPRCorrection();
}

}  // namespace

/*
 * Matches reflectivity near the melting layer against a library of vertical profiles.
 *
 * A profile has 1,800 levels, 7.5 m apart, with the freezing level at a third of them. The file has
 * 60 values (dB) for each level in turn. Matching keeps this order: each lane sums its own profile,
 * level by level.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/array.h"
#include "base/files/file.h"
#include "base/kernel.h"
#include "base/text.h"
#include "clutterclassifier/Cradarpro.h"
#include "corrections/beam.h"

using namespace clutter;
using namespace clutter::corrections;

namespace {

constexpr int kProfiles = 60;
constexpr int kLevels = 1800;
constexpr int kFreezingLevel = kLevels / 3;
constexpr double kMeltingLayerReachM = 1000.0;  // above and below the freezing level
constexpr double kMinZ = 1.0;
constexpr double kMaxDifferenceDb = 1.0;

/* Linear values of all profiles, level by level. */
std::optional<std::vector<double>> readProfiles(const char* path) {
    const auto bytes = base::readTextFile(path);
    if (!bytes) {
        return std::nullopt;
    }
    base::TokenReader tokens({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    std::vector<double> values(std::size_t{kProfiles} * kLevels, 1.0);
    for (double& value : values) {
        const auto token = tokens.next();
        if (!token) {
            break;
        }
        value = std::pow(10.0, base::parseNumber(*token) / 10.0);
    }
    return values;
}

/* sums[j] = profile j seen through the beam; levels and power hold n levels. */
CLUTTER_KERNEL void weighProfiles(const double* levels, const double* power, int n,
                                  double* __restrict sums) {
    for (int j = 0; j < kProfiles; ++j) {
        sums[j] = 0.0;
    }
    for (int m = 0; m < n; ++m) {
        const double weight = power[m];
        for (int j = 0; j < kProfiles; ++j) {
            sums[j] += levels[j + m * kProfiles] * weight;
        }
    }
}

/* Matches gate after gate. The beam pattern is computed once for equal ranges in a row, and the
 * profiles seen through it once for equal levels. */
class ProfileMatcher {
  public:
    ProfileMatcher(const std::vector<double>& profiles, double beamwidth, double elevation)
        : profiles_(profiles), beamwidth_(beamwidth), elevation_(elevation) {}

    /* The ground value of the profile closest to z; no result when none is close. */
    std::optional<double> match(double z, double range, int level) {
        if (!(range == range_)) {
            changeRange(range);
        }
        if (!look(level)) {
            return std::nullopt;
        }
        const double dbz = 10.0 * std::log10(z);
        int best = 0;
        double least = std::fabs(dbz - seenDb_[0]);
        for (int j = 1; j < kProfiles; ++j) {
            const double difference = std::fabs(dbz - seenDb_[j]);
            if (difference < least) {
                best = j;
                least = difference;
            }
        }
        if (!(least < kMaxDifferenceDb)) {
            return std::nullopt;
        }
        return profiles_[static_cast<std::size_t>(best)];
    }

  private:
    void changeRange(double range) {
        range_ = range;
        level_ = kNoLevel;
        power_ = computeBeamPattern(beamwidth_, range, elevation_).heightPower;
    }

    /* The profiles seen through the beam at a level, in dB; false where the beam exceeds them. */
    bool look(int level) {
        const int n = static_cast<int>(power_.size());
        const int first = level - n / 2;
        if (first < 0 || first + n > kLevels) {
            return false;
        }
        if (level == level_) {
            return true;
        }
        level_ = level;
        weighProfiles(profiles_.data() + static_cast<std::ptrdiff_t>(first) * kProfiles,
                      power_.data(), n, seenDb_);
        for (double& seen : seenDb_) {
            seen = 10.0 * std::log10(seen);
        }
        return true;
    }

    static constexpr int kNoLevel = -1;

    const std::vector<double>& profiles_;
    double beamwidth_;
    double elevation_;
    double range_ = NAN;
    int level_ = kNoLevel;
    std::vector<double> power_;
    double seenDb_[kProfiles];
};

}  // namespace

int Cradarpro::GetVPR(double** vpr, int& nprofiles, int& nlevels, int& reflevel, double& dh,
                      char* filename, int) {
    const auto levels = readProfiles(filename);
    if (!levels) {
        return 0;
    }
    std::unique_ptr<double[]> profiles(new double[levels->size()]);
    auto value = levels->begin();
    for (std::size_t i = 0; i < kLevels; ++i) {
        for (std::size_t j = 0; j < kProfiles; ++j) {
            profiles[i + kLevels * j] = *value++;
        }
    }
    base::adopt(*vpr, std::move(profiles));
    nprofiles = kProfiles;
    nlevels = kLevels;
    reflevel = kFreezingLevel;
    dh = kLevelStepM;
    return 1;
}

int Cradarpro::VPRCorrection(double* zout, double* zin, double* range, double* fl, int n,
                             double elevation, double beamwidth, char* filename, int) {
    const auto profiles = readProfiles(filename);
    if (!profiles) {
        return 0;
    }
    ProfileMatcher matcher(*profiles, beamwidth, elevation);
    for (int i = 0; i < n; ++i) {
        zout[i] = zin[i];
        if (!(zin[i] > kMinZ)) {
            continue;
        }
        const double height = beamHeight(range[i], elevation);
        const double reach = kMeltingLayerReachM;
        if (!(fl[i] - reach < height && height < fl[i] + reach)) {
            continue;
        }
        const int level = kFreezingLevel - static_cast<int>((fl[i] - height) / kLevelStepM);
        if (const auto ground = matcher.match(zin[i], range[i], level)) {
            zout[i] = *ground;
        }
    }
    return 1;
}

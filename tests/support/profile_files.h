/*
 * profile_files.h - writes libraries of vertical profiles for tests.
 */
#ifndef TESTS_SUPPORT_PROFILE_FILES_H
#define TESTS_SUPPORT_PROFILE_FILES_H

#include <cmath>
#include <fstream>
#include <string>

namespace clutter::test {

constexpr int kProfiles = 60;
constexpr int kLevels = 1800;

/* dB of profile j at level i: rain of its own strength below the freezing level (600), a bright
 * band at it, falling off above. */
inline double profileDb(int j, int i) {
    const double rain = 10.0 + 0.7 * j, up = (i - 600) / 133.0;
    const double band = 6.0 * std::exp(-16.0 * (up + 0.3) * (up + 0.3));
    return rain + band - (up > 0.0 ? 5.0 * up : 0.02 * j * up);
}

inline void writeProfiles(const std::string& path, int tokens = kProfiles * kLevels) {
    std::ofstream file(path);
    file.precision(12);
    for (int k = 0; k < tokens; ++k) {
        file << profileDb(k % kProfiles, k / kProfiles) << (k % kProfiles == 59 ? '\n' : ' ');
    }
}

}  // namespace clutter::test

#endif

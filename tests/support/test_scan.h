/*
 * test_scan.h - a scan of seven fields with rain, clutter and noise, for comparisons and benches.
 * Plausible in its statistics, not in its pictures.
 */
#ifndef TESTS_SUPPORT_TEST_SCAN_H
#define TESTS_SUPPORT_TEST_SCAN_H

#include <random>
#include <vector>

#include "support/literal/classification.h"

namespace clutter::test {

struct TestScan {
    int nrays, ngates;
    std::vector<double> fields[7];  // zhh, zdr, phidp, rhohv, velocity, ldr, pdf
    std::vector<double> ranges, azimuths;
    double elevation = 0.5;
    double params[3] = {40.0, 26.0, 255.0};

    double* field(int i) { return fields[i].empty() ? nullptr : fields[i].data(); }

    literal::Scan literal() {
        literal::Scan scan;
        scan.nrays = nrays;
        scan.ngates = ngates;
        for (int i = 0; i < 7; ++i) {
            scan.fields[i] = field(i);
        }
        scan.gateSize = ranges[1] - ranges[0];
        for (int i = 0; i < 3; ++i) {
            scan.params[i] = params[i];
        }
        return scan;
    }
};

/* echoShare of the blocks of 25 gates hold an echo, a fifth of those ground clutter. */
inline TestScan makeTestScan(int nrays, int ngates, unsigned seed, double echoShare = 0.6) {
    TestScan scan{nrays, ngates, {}, {}, {}};
    for (int g = 0; g < (ngates < 2 ? 2 : ngates); ++g) {
        scan.ranges.push_back(125.0 + 250.0 * g);
    }
    for (int r = 0; r < nrays; ++r) {
        scan.azimuths.push_back(r * 6.283185307179586 / nrays);
    }
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    std::vector<int> kinds(static_cast<std::size_t>(ngates / 25 + 1));
    for (int r = 0; r < nrays; ++r) {
        if (r % 5 == 0) {
            for (int& kind : kinds) {
                kind = uniform(random) > echoShare ? 0 : uniform(random) < 0.2 ? 2 : 1;
            }
        }
        for (int g = 0; g < ngates; ++g) {
            const int kind = kinds[static_cast<std::size_t>(g / 25)];
            const bool clutter = kind == 2;
            const double spread = clutter ? 1.0 : 0.12;
            scan.fields[0].push_back(kind == 0 ? -45.0 + 3.0 * normal(random)
                                               : 32.0 + 8.0 * spread * normal(random));
            scan.fields[1].push_back(0.8 + 3.5 * spread * normal(random));
            scan.fields[2].push_back(60.0 + (clutter ? 50.0 : 2.0) * normal(random));
            scan.fields[3].push_back(clutter ? 0.5 + 0.5 * uniform(random)
                                             : 0.98 + 0.01 * normal(random));
            scan.fields[4].push_back((clutter ? 0.3 : 8.0) * normal(random));
            scan.fields[5].push_back((clutter ? -14.0 : -29.0) + 4.0 * normal(random));
            scan.fields[6].push_back(clutter ? uniform(random) : 0.4 * uniform(random));
        }
    }
    return scan;
}

}  // namespace clutter::test

#endif

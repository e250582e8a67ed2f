/*
 * The stage that corrects reflectivity in and near the melting layer by vertical profiles.
 */
#include <cstddef>
#include <limits>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "corrections/decibels.h"
#include "corrections/scan_geometry.h"
#include "model/field_access.h"

using namespace clutter::corrections;
using clutter::model::cells;
using clutter::model::elevationOf;
using clutter::model::holdAll;

namespace {

/* The scan with all rays of a gate in a row: they share a range and so a beam pattern. */
struct GateMajor {
    std::vector<double> z, range, freezingLevel;

    explicit GateMajor(const Crres& c) {
        const std::vector<double> ranges = gateRanges(c.zhh);
        for (std::vector<double>* values : {&z, &range, &freezingLevel}) {
            values->reserve(cells(c.zhh));
        }
        for (std::size_t g = 0; g < ranges.size(); ++g) {
            for (std::size_t i = g; i < cells(c.zhh); i += ranges.size()) {
                z.push_back(toLinear(c.zhh.data[i]));
                range.push_back(ranges[g]);
                freezingLevel.push_back(static_cast<double>(c.fzl.data[i]));
            }
        }
    }
};

}  // namespace

void Crres::VPRCorrection() {
    const std::size_t n = cells(zhh);
    if (!holdAll({&zhh, &fzl}, n) || n > std::numeric_limits<int>::max()) {
        return;
    }
    GateMajor scan(*this);
    radarpro.VPRCorrection(scan.z.data(), scan.z.data(), scan.range.data(),
                           scan.freezingLevel.data(), static_cast<int>(n),
                           static_cast<double>(elevationOf(zhh)),
                           static_cast<double>(zhh.beamwidth), vprfile, 0);
    const std::size_t ngates = static_cast<std::size_t>(zhh.ngates);
    const std::size_t nrays = static_cast<std::size_t>(zhh.nrays);
    for (std::size_t r = 0; r < nrays; ++r) {
        for (std::size_t g = 0; g < ngates; ++g) {
            zhh.data[r * ngates + g] = toDecibels(scan.z[r + g * nrays]);
        }
    }
}

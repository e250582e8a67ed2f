/* Sweeps of CfRadial files, of both releases. */
#include "scan/formats/cfradial/cfradial_sweeps.h"

#include <algorithm>
#include <cstdlib>

namespace scan::cfradial {
namespace {

constexpr char kSweepGroup[] = "sweep_";

int wholeOr(const std::vector<double>& values, std::size_t at, int otherwise) {
    return at < values.size() && std::abs(values[at]) < 1e9 ? static_cast<int>(values[at])
                                                            : otherwise;
}

}  // namespace

std::vector<Slice> slicesOf(const netcdf::Group& file, std::size_t rays, ValueBudget& budget,
                            std::vector<std::string>& damage) {
    const auto begins = file.numbers("sweep_start_ray_index", budget);
    const auto ends = file.numbers("sweep_end_ray_index", budget);
    const auto numbers = file.numbers("sweep_number", budget);
    const auto angles = file.numbers("fixed_angle", budget);
    const auto modes = file.texts("sweep_mode", budget);
    std::vector<Slice> slices;
    const std::size_t count = std::max<std::size_t>(1, std::min(begins.size(), ends.size()));
    for (std::size_t s = 0; s < count; ++s) {
        Slice slice;
        const int begin = wholeOr(begins, s, 0);
        const int end = wholeOr(ends, s, static_cast<int>(rays) - 1);
        slice.number = wholeOr(numbers, s, static_cast<int>(s));
        slice.fixedAngleDeg = s < angles.size() ? angles[s] : NAN;
        slice.mode = s < modes.size() ? modes[s] : "";
        if (begin < 0 || end < begin || static_cast<std::size_t>(end) >= rays) {
            damage.push_back("Sweep " + std::to_string(slice.number) +
                             " has impossible ray indices and is left out.");
            continue;
        }
        slice.begin = static_cast<std::size_t>(begin);
        slice.end = static_cast<std::size_t>(end) + 1;
        slices.push_back(std::move(slice));
    }
    return slices;
}

std::vector<netcdf::Group> sweepGroups(const netcdf::Group& file) {
    std::vector<netcdf::Group> found;
    for (const netcdf::Group& group : file.groups()) {
        if (group.name().rfind(kSweepGroup, 0) == 0) {
            found.push_back(group);
        }
    }
    const auto number = [](const netcdf::Group& group) {
        return std::atol(group.name().c_str() + sizeof kSweepGroup - 1);
    };
    std::stable_sort(found.begin(), found.end(),
                     [&](const auto& a, const auto& b) { return number(a) < number(b); });
    return found;
}

int sweepNumber(const netcdf::Group& group, int otherwise, ValueBudget& budget) {
    return wholeOr(group.numbers("sweep_number", budget), 0, otherwise);
}

}  // namespace scan::cfradial

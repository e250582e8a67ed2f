/* trained_input.cpp - degrees from a curve, a weight and a lean. */
#include "scan/membership/trained_input.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "scan/classes/inputs.h"

namespace scan {
namespace {

constexpr double kLeastDegree = 0.0005;  // no input overrules all others
constexpr double kFarAway = 1048576;

}  // namespace

const clutter_input_info& inputInfo(int input) {
    return *inputs()[static_cast<std::size_t>(input)].info;
}

std::vector<TablePoint> TrainedInput::table(TableClass tableClass) const {
    const InputAxis& axis = curve.axis();
    std::vector<TablePoint> points;
    const auto add = [&](double x, int point) {
        const double margin = weight.weight * curve.ratio(point) + weight.lean;
        const double precipitation = 1 / (1 + std::exp(-margin));
        // Rounded here, so that both degrees of a pair add up to 1 in the files too.
        const double degree =
            std::round(1e4 * std::clamp(precipitation, kLeastDegree, 1 - kLeastDegree)) / 1e4;
        points.push_back({x, tableClass == TableClass::kPrecipitation ? degree : 1 - degree});
    };
    const auto addNeutral = [&](double x) { points.push_back({x, 0.5}); };
    if (std::isfinite(axis.neutralBelow)) {
        addNeutral(-kFarAway);
        addNeutral(axis.neutralBelow);
    }
    for (int point = RatioCurve::kPoints - 1; axis.mirrored && point >= 0; --point) {
        add(-curve.abscissa(point), point);
    }
    if (axis.logarithmic && !axis.mirrored) {
        add(0, 0);
    }
    for (int point = 0; point < RatioCurve::kPoints; ++point) {
        add(curve.abscissa(point), point);
    }
    addNeutral(axis.neutralAbove);
    addNeutral(kFarAway);
    return points;
}

std::vector<float> marginsOf(const std::vector<TrainedInput>& trained, const LabelledScan& scan,
                             Window neighbourhood) {
    std::vector<float> textures(scan.cells()), others(scan.cells());
    for (const TrainedInput& one : trained) {
        const std::vector<float>& values = scan.inputs[static_cast<std::size_t>(one.input)];
        std::vector<float>& sum = inputInfo(one.input).texture != 0 ? textures : others;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (std::isfinite(values[i])) {
                sum[i] += static_cast<float>(one.weight.weight * one.curve.at(values[i]) +
                                             one.weight.lean);
            }
        }
    }
    if (neighbourhood.gates > 0) {
        textures = windowMeans(scan, textures, neighbourhood);
    }
    for (std::size_t i = 0; i < textures.size(); ++i) {
        textures[i] += others[i];
    }
    return textures;
}

std::vector<std::string> writeTables(const std::vector<TrainedInput>& trained,
                                     const std::string& directory) {
    std::vector<std::string> files;
    for (const TrainedInput& one : trained) {
        for (const TableClass c : {TableClass::kClutter, TableClass::kPrecipitation}) {
            files.push_back(tableFileName(inputInfo(one.input).tag, c));
            writeTableFile(directory + "/" + files.back(), one.table(c));
        }
    }
    return files;
}

}  // namespace scan

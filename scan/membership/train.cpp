/* train.cpp - curves, weights, and what they are worth on rays that they were not made from. */
#include "scan/membership/train.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <stdexcept>
#include <utility>

#include "scan/classes/inputs.h"

namespace scan {
namespace {

constexpr int kSectorRays = 10;
constexpr int kFolds = 5;
constexpr long kMinGates = 1000;
constexpr std::size_t kMinSectors = 2;
constexpr double kMaxGateSubsets = 600000;  // of one class and scan in a regression
constexpr double kMinMeasured = 0.5;        // share of a class's gates that must have a value
using Labels = std::vector<Label>;

int sectorOf(const LabelledScan& scan, std::size_t cell) {
    return static_cast<int>(cell / static_cast<std::size_t>(scan.gates)) / kSectorRays;
}

bool isWeather(Label label) {
    return label == Label::kWeather;
}

bool isClutter(Label label) {
    return label == Label::kClutter;
}

/* Values of an input where labels say weather or clutter. */
ClassValues valuesOf(const LabelledScan& scan, const Labels& labels, int input) {
    ClassValues values;
    const std::vector<float>& all = scan.inputs[static_cast<std::size_t>(input)];
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (isWeather(labels[i])) {
            values.precipitation.push_back(all[i]);
        } else if (isClutter(labels[i])) {
            values.clutter.push_back(all[i]);
        }
    }
    return values;
}

/* The ratio of an input at every gate, and whether there is one; averaged where its verdict is. */
struct Feature {
    std::vector<float> ratio, present;
};

Feature featureOf(const LabelledScan& scan, const RatioCurve& curve, int input, Window window) {
    Feature feature;
    for (const float value : scan.inputs[static_cast<std::size_t>(input)]) {
        feature.ratio.push_back(static_cast<float>(curve.at(value)));
        feature.present.push_back(std::isfinite(value) ? 1.0f : 0.0f);
    }
    if (inputInfo(input).texture != 0 && window.gates > 0) {
        feature.ratio = windowMeans(scan, feature.ratio, window);
        feature.present = windowMeans(scan, feature.present, window);
    }
    return feature;
}

/* Every n-th labelled gate of each class, so that a regression takes seconds. */
std::vector<std::size_t> chooseGates(const Labels& labels, std::size_t inputs) {
    const double most = std::max(1.0, kMaxGateSubsets / std::exp2(static_cast<double>(inputs)));
    std::vector<std::size_t> chosen;
    for (const Label wanted : {Label::kWeather, Label::kClutter}) {
        const auto count = static_cast<double>(std::count(labels.begin(), labels.end(), wanted));
        const double step = std::max(1.0, count / most);
        double next = 0, seen = 0;
        for (std::size_t i = 0; i < labels.size(); ++i) {
            if (labels[i] != wanted) {
                continue;
            }
            if (seen >= next) {
                chosen.push_back(i);
                next += step;
            }
            ++seen;
        }
    }
    return chosen;
}

/* One training on labels that may leave out parts of the scans. */
std::vector<TrainedInput> fitInputs(const std::vector<LabelledScan>& scans,
                                    const std::vector<Labels>& labels,
                                    const std::vector<int>& inputs, const TrainOptions& options) {
    std::vector<TrainedInput> trained;
    for (const int input : inputs) {
        std::vector<ClassValues> values;
        for (std::size_t s = 0; s < scans.size(); ++s) {
            values.push_back(valuesOf(scans[s], labels[s], input));
        }
        const auto curve = RatioCurve::fit(*axisOf(inputInfo(input).tag), values);
        if (curve) {
            trained.push_back({input, *curve, {}});
        }
    }
    std::vector<WeightScan> weightScans;
    for (std::size_t s = 0; s < scans.size(); ++s) {
        WeightScan scan;
        std::vector<Feature> features;
        for (std::size_t i = 0; i < trained.size(); ++i) {
            if (!scans[s].inputs[static_cast<std::size_t>(trained[i].input)].empty()) {
                scan.inputs.push_back(static_cast<int>(i));
                features.push_back(
                    featureOf(scans[s], trained[i].curve, trained[i].input, options.neighbourhood));
            }
        }
        for (const std::size_t gate : chooseGates(labels[s], features.size())) {
            scan.isWeather.push_back(isWeather(labels[s][gate]) ? 1 : 0);
            for (const Feature& feature : features) {
                scan.features.insert(scan.features.end(),
                                     {feature.ratio[gate], feature.present[gate]});
            }
        }
        weightScans.push_back(std::move(scan));
    }
    const auto weights = fitWeights(weightScans, static_cast<int>(trained.size()), options.prior);
    for (std::size_t i = 0; i < trained.size(); ++i) {
        trained[i].weight = weights[i];
    }
    return trained;
}

void requireEnough(const std::vector<LabelledScan>& scans) {
    long clutter = 0, weather = 0;
    std::set<std::pair<std::size_t, int>> sectors;
    for (std::size_t s = 0; s < scans.size(); ++s) {
        for (std::size_t i = 0; i < scans[s].cells(); ++i) {
            weather += isWeather(scans[s].labels[i]) ? 1 : 0;
            if (isClutter(scans[s].labels[i])) {
                ++clutter;
                sectors.insert({s, sectorOf(scans[s], i)});
            }
        }
    }
    if (clutter < kMinGates || weather < kMinGates) {
        throw std::runtime_error("too few labelled gates: " + std::to_string(clutter) +
                                 " of clutter and " + std::to_string(weather) +
                                 " of weather, 1000 of each are needed");
    }
    if (sectors.size() < kMinSectors) {
        throw std::runtime_error("clutter is in one sector of ten rays only, two are needed");
    }
}

std::string percent(double share) {
    return std::to_string(std::lround(100 * share)) + " %";
}

/* Chance that weather lies nearer the weather's end of the axis than clutter does. */
double orderOf(const InputAxis& axis, ClassValues values) {
    const double sign = axis.clutterIsLow ? 1 : -1;
    const auto clean = [&](std::vector<float>& list) {
        std::vector<float> kept;
        for (const float value : list) {
            if (std::isfinite(value)) {
                const float x = axis.mirrored ? std::fabs(value) : value;
                kept.push_back(static_cast<float>(sign) * x);
            }
        }
        std::sort(kept.begin(), kept.end());
        list = std::move(kept);
    };
    clean(values.precipitation);
    clean(values.clutter);
    double right = 0;
    for (const float weather : values.precipitation) {
        const auto [low, high] =
            std::equal_range(values.clutter.begin(), values.clutter.end(), weather);
        right += static_cast<double>(low - values.clutter.begin()) +
                 0.5 * static_cast<double>(high - low);
    }
    const double pairs = static_cast<double>(values.precipitation.size()) *
                         static_cast<double>(values.clutter.size());
    return pairs > 0 ? right / pairs : 1;
}

/* Removes inputs that hardly have values where labels are: a filter took them, and their absence
 * would be learned. */
void leaveOutFiltered(std::vector<LabelledScan>& scans, std::vector<std::string>& warnings) {
    for (LabelledScan& scan : scans) {
        for (std::size_t input = 0; input < scan.inputs.size(); ++input) {
            if (scan.inputs[input].empty()) {
                continue;
            }
            const ClassValues values = valuesOf(scan, scan.labels, static_cast<int>(input));
            for (const auto* list : {&values.precipitation, &values.clutter}) {
                const auto present = static_cast<double>(std::count_if(
                    list->begin(), list->end(), [](float value) { return std::isfinite(value); }));
                if (present >= kMinMeasured * static_cast<double>(list->size())) {
                    continue;
                }
                warnings.push_back(
                    scan.name + ": " + inputInfo(static_cast<int>(input)).name +
                    " is left out: it has a value on " +
                    percent(present / static_cast<double>(list->size())) +
                    (list == &values.clutter ? " of the clutter" : " of the weather") + " only");
                scan.inputs[input].clear();
                break;
            }
        }
    }
}

void warnOfOrder(const std::vector<LabelledScan>& scans, const std::vector<TrainedInput>& trained,
                 std::vector<std::string>& warnings) {
    for (const TrainedInput& one : trained) {
        const std::string name = inputInfo(one.input).name;
        for (const LabelledScan& scan : scans) {
            if (scan.inputs[static_cast<std::size_t>(one.input)].empty()) {
                continue;
            }
            const double order = orderOf(one.curve.axis(), valuesOf(scan, scan.labels, one.input));
            if (order < 0.5) {
                warnings.push_back(scan.name + ": " + name +
                                   ": clutter lies where weather is expected (" +
                                   percent(1 - order) + " of all pairs are against its weight)");
            }
        }
        if (one.weight.weight <= kMinWeight) {
            warnings.push_back(name + " hardly counts beside the others: its weight is the least");
        }
    }
}

std::vector<int> presentInputs(const std::vector<LabelledScan>& scans) {
    std::vector<int> present;
    for (std::size_t i = 0; i < inputs().size(); ++i) {
        if (std::any_of(scans.begin(), scans.end(),
                        [&](const LabelledScan& scan) { return !scan.inputs[i].empty(); })) {
            present.push_back(static_cast<int>(i));
        }
    }
    return present;
}

/* Labels without the sectors of a fold and, on both sides of them, the rays whose windows reach
 * into them. */
Labels withoutFold(const LabelledScan& scan, int fold, const TrainOptions& options) {
    const int reach = 1 + options.neighbourhood.rays / 2;
    Labels labels = scan.labels;
    for (int ray = 0; ray < scan.rays; ++ray) {
        bool touched = false;
        for (int r = ray - reach; r <= ray + reach; ++r) {
            const int wrapped = ((r % scan.rays) + scan.rays) % scan.rays;
            touched = touched || wrapped / kSectorRays % kFolds == fold;
        }
        if (touched) {
            const auto first = labels.begin() + std::ptrdiff_t{ray} * scan.gates;
            std::fill(first, first + scan.gates, Label::kNotJudged);
        }
    }
    return labels;
}

std::vector<ScanScores> scoreUnused(const std::vector<LabelledScan>& scans,
                                    const std::vector<int>& inputs, const TrainOptions& options) {
    std::vector<LabelCounts> counts(scans.size());
    for (int fold = 0; fold < kFolds; ++fold) {
        std::vector<Labels> labels;
        for (const LabelledScan& scan : scans) {
            labels.push_back(withoutFold(scan, fold, options));
        }
        const auto trained = fitInputs(scans, labels, inputs, options);
        for (std::size_t s = 0; s < scans.size(); ++s) {
            const auto margins = marginsOf(trained, scans[s], options.neighbourhood);
            for (std::size_t i = 0; i < margins.size(); ++i) {
                if (sectorOf(scans[s], i) % kFolds == fold) {
                    counts[s].add(scans[s].labels[i], margins[i]);
                }
            }
        }
    }
    std::vector<ScanScores> result;
    for (std::size_t s = 0; s < scans.size(); ++s) {
        const auto count = [&](Label label) {
            return static_cast<long>(
                std::count(scans[s].labels.begin(), scans[s].labels.end(), label));
        };
        result.push_back({scans[s].name, count(Label::kClutter), count(Label::kWeather),
                          count(Label::kBeside), counts[s].scores()});
    }
    return result;
}

}  // namespace

Training trainMembership(const std::vector<LabelledScan>& given, const TrainOptions& options) {
    requireEnough(given);
    Training training;
    std::vector<LabelledScan> scans = given;
    leaveOutFiltered(scans, training.warnings);
    const std::vector<int> present = presentInputs(scans);
    std::vector<Labels> labels;
    for (const LabelledScan& scan : scans) {
        labels.push_back(scan.labels);
    }
    training.inputs = fitInputs(scans, labels, present, options);
    if (training.inputs.empty()) {
        throw std::runtime_error("no input has values of both classes");
    }
    training.unused = scoreUnused(scans, present, options);
    warnOfOrder(scans, training.inputs, training.warnings);
    return training;
}

}  // namespace scan

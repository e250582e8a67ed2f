/* fit_weights.h - a weight and a lean for each input, by logistic regression. */
#ifndef SCAN_MEMBERSHIP_FIT_WEIGHTS_H
#define SCAN_MEMBERSHIP_FIT_WEIGHTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace scan {

/* What an input contributes to the margin: weight * ratio + lean. */
struct InputWeight {
    double weight = 1;
    double lean = 0;
};

constexpr double kMinWeight = 0.05, kMaxWeight = 1.5;

/* Labelled gates of one scan. */
struct WeightScan {
    std::vector<int> inputs;  // that the scan has
    /* Gate after gate, for each of them its ratio and the share of the window that has a value. */
    std::vector<float> features;
    std::vector<std::uint8_t> isWeather;  // one a gate

    std::size_t gates() const { return isWeather.size(); }
};

/*
 * The weights of `inputs` inputs with the least logistic loss over all subsets of the inputs of
 * each scan at once, so that the leans suit any of them. Every scan and every subset counts the
 * same; in each, clutter has the share `prior`.
 */
std::vector<InputWeight> fitWeights(const std::vector<WeightScan>& scans, int inputs, double prior);

}  // namespace scan

#endif

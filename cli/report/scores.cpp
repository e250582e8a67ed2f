/* scores.cpp - counts of a confusion matrix, and the scores made from them. */
#include "report/scores.h"

#include <limits>
#include <stdexcept>

namespace cli {

namespace {

/* Index of a class code, -1 for anything else. */
int indexOf(double code) {
    if (code == 0.0) {
        return kIsPrecipitation;
    }
    if (code == 5.0) {
        return kIsClutter;
    }
    if (code == 3.0) {
        return kIsNoise;
    }
    return -1;
}

double ratio(double part, double whole) {
    return whole != 0.0 ? part / whole : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

Confusion compare(const std::vector<float>& truth, const std::vector<double>& result) {
    if (truth.size() != result.size()) {
        throw std::invalid_argument("truth and result differ in size");
    }
    Confusion confusion{};
    for (std::size_t i = 0; i < truth.size(); ++i) {
        const int row = indexOf(truth[i]), column = indexOf(result[i]);
        if (row >= 0 && column >= 0) {
            ++confusion[row][column];
        }
    }
    return confusion;
}

Scores scoresOf(const Confusion& confusion) {
    const auto& clutter = confusion[kIsClutter];
    const auto& rain = confusion[kIsPrecipitation];
    const double a = static_cast<double>(clutter[kIsClutter]);
    const double b = static_cast<double>(rain[kIsClutter]);
    const double c = static_cast<double>(clutter[kIsPrecipitation] + clutter[kIsNoise]);
    const double d = static_cast<double>(rain[kIsPrecipitation] + rain[kIsNoise]);
    return {ratio(a, a + c), ratio(b, a + b), ratio(a, a + b + c),
            ratio(2.0 * (a * d - b * c), (a + c) * (c + d) + (a + b) * (b + d)), ratio(d, b + d)};
}

}  // namespace cli

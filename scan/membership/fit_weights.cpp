/* fit_weights.cpp - Newton's method within bounds: few unknowns, many gates. */
#include "scan/membership/fit_weights.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace scan {
namespace {

constexpr int kSteps = 60;
constexpr double kConverged = 1e-6;
constexpr double kRidge = 1e-6;
constexpr double kMaxLean = 9;

using Vector = std::vector<double>;

/* Loss, gradient and curvature at one set of unknowns: weights, then leans. */
struct Local {
    explicit Local(std::size_t n) : gradient(n), curvature(n, Vector(n)) {
        for (std::size_t i = 0; i < n; ++i) {
            curvature[i][i] = kRidge;
        }
    }
    double loss = 0;
    Vector gradient;
    std::vector<Vector> curvature;
};

class Problem {
  public:
    Problem(const std::vector<WeightScan>& scans, int inputs, double prior)
        : scans_(scans), inputs_(static_cast<std::size_t>(inputs)), prior_(prior) {}

    std::size_t size() const { return 2 * inputs_; }

    Local at(const Vector& unknowns) const {
        Local local(size());
        for (const WeightScan& scan : scans_) {
            const auto weather = static_cast<double>(
                std::accumulate(scan.isWeather.begin(), scan.isWeather.end(), std::size_t{0}));
            const double clutter = static_cast<double>(scan.gates()) - weather;
            const unsigned subsets = (1u << scan.inputs.size()) - 1;
            const double weights[] = {prior_ / std::max(clutter, 1.0) / subsets,
                                      (1 - prior_) / std::max(weather, 1.0) / subsets};
            for (unsigned subset = 1; subset <= subsets; ++subset) {
                addSubset(scan, subset, weights, unknowns, local);
            }
        }
        return local;
    }

  private:
    void addSubset(const WeightScan& scan, unsigned subset, const double* weights,
                   const Vector& unknowns, Local& local) const {
        std::vector<std::size_t> columns;  // of the features
        std::vector<std::size_t> places;   // among the unknowns
        for (std::size_t i = 0; i < scan.inputs.size(); ++i) {
            if ((subset & (1u << i)) != 0) {
                const auto input = static_cast<std::size_t>(scan.inputs[i]);
                columns.insert(columns.end(), {2 * i, 2 * i + 1});
                places.insert(places.end(), {input, inputs_ + input});
            }
        }
        const std::size_t width = 2 * scan.inputs.size();
        const std::size_t n = columns.size();
        Vector x(n);
        for (std::size_t gate = 0; gate < scan.gates(); ++gate) {
            double margin = 0;
            for (std::size_t i = 0; i < n; ++i) {
                x[i] = static_cast<double>(scan.features[gate * width + columns[i]]);
                margin += unknowns[places[i]] * x[i];
            }
            const int y = scan.isWeather[gate];
            const double toClass = y == 1 ? margin : -margin;
            const double wrong = 1 / (1 + std::exp(std::clamp(toClass, -500.0, 500.0)));
            local.loss += weights[y] * (toClass < -30 ? -toClass : std::log1p(std::exp(-toClass)));
            const double slope = weights[y] * (y == 1 ? -wrong : wrong);
            const double curve = weights[y] * wrong * (1 - wrong);
            for (std::size_t i = 0; i < n; ++i) {
                local.gradient[places[i]] += slope * x[i];
                for (std::size_t j = 0; j <= i; ++j) {
                    local.curvature[places[i]][places[j]] += curve * x[i] * x[j];
                }
            }
        }
    }

    const std::vector<WeightScan>& scans_;
    std::size_t inputs_;
    double prior_;
};

/* Solves a symmetric system of the rows that are free, the lower triangle given; 0 elsewhere. */
Vector solve(const std::vector<Vector>& lower, const Vector& right,
             const std::vector<bool>& isFree) {
    std::vector<std::size_t> rows;
    for (std::size_t i = 0; i < right.size(); ++i) {
        if (isFree[i]) {
            rows.push_back(i);
        }
    }
    const std::size_t n = rows.size();
    std::vector<Vector> a(n, Vector(n + 1));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            const auto [low, high] = std::minmax(rows[i], rows[j]);
            // Either triangle may hold the sum, the other one is 0.
            a[i][j] = low == high ? lower[low][low] : lower[high][low] + lower[low][high];
        }
        a[i][n] = right[rows[i]];
    }
    for (std::size_t k = 0; k < n; ++k) {  // positive definite: no pivoting
        for (std::size_t i = k + 1; i < n; ++i) {
            const double factor = a[i][k] / a[k][k];
            for (std::size_t j = k; j <= n; ++j) {
                a[i][j] -= factor * a[k][j];
            }
        }
    }
    Vector solution(right.size());
    for (std::size_t k = n; k-- > 0;) {
        double sum = a[k][n];
        for (std::size_t j = k + 1; j < n; ++j) {
            sum -= a[k][j] * solution[rows[j]];
        }
        solution[rows[k]] = sum / a[k][k];
    }
    return solution;
}

}  // namespace

std::vector<InputWeight> fitWeights(const std::vector<WeightScan>& scans, int inputs,
                                    double prior) {
    const Problem problem(scans, inputs, prior);
    const auto n = static_cast<std::size_t>(inputs);
    Vector unknowns(2 * n), low(2 * n, -kMaxLean), high(2 * n, kMaxLean);
    for (std::size_t i = 0; i < n; ++i) {
        unknowns[i] = 0.5;
        low[i] = kMinWeight;
        high[i] = kMaxWeight;
    }
    Local local = problem.at(unknowns);
    for (int step = 0; step < kSteps; ++step) {
        std::vector<bool> isFree(2 * n);
        Vector downhill(2 * n);
        for (std::size_t i = 0; i < 2 * n; ++i) {
            downhill[i] = -local.gradient[i];
            isFree[i] = !((unknowns[i] <= low[i] && downhill[i] < 0) ||
                          (unknowns[i] >= high[i] && downhill[i] > 0));
        }
        const Vector direction = solve(local.curvature, downhill, isFree);
        double moved = 0;
        for (double length = 1; length > 1e-4; length /= 2) {  // shorter where it overshoots
            Vector trial = unknowns;
            moved = 0;
            for (std::size_t i = 0; i < 2 * n; ++i) {
                trial[i] = std::clamp(trial[i] + length * direction[i], low[i], high[i]);
                moved = std::max(moved, std::fabs(trial[i] - unknowns[i]));
            }
            Local there = problem.at(trial);
            if (there.loss <= local.loss || moved < kConverged) {
                unknowns = std::move(trial);
                local = std::move(there);
                break;
            }
        }
        if (moved < kConverged) {
            break;
        }
    }
    std::vector<InputWeight> weights;
    for (std::size_t i = 0; i < n; ++i) {
        weights.push_back({unknowns[i], unknowns[n + i]});
    }
    return weights;
}

}  // namespace scan

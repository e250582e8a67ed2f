/*
 * Trials are sorted so that neighbours have similar costs, and grouped. A group walks along the ray
 * in chunks of gates; after each chunk, it is dropped if none of its lanes can still win:
 *
 *      trials, sorted  | group 0 | group 1 | ... | group 8 | ...    kLanes trials in a group
 *      order of visits   trial 0's group first, then groups 0, 8, 16, ..., 1, 9, 17, ...  (kStride)
 *
 *      gates           | chunk | chunk | ...                       kChunkGates gates in a chunk
 *      lane 0 (trial)    ----------x                               dropped with its whole group
 *      lane 1            ----------x
 *
 * The bounds. Let d be the relative error of z^b and of any sum of such positive terms, including
 * the rounding of both evaluations. The denominator is off by at most
 *
 *   profile      2 d I F, of at least I              final value  d (U^b + 2 a I), of at least U^b
 *   forward      d S, of at least the nearest |1 - S| met, where S is the sum up to the gate
 *
 * which bounds the relative error of each step of the phase. The error of the phase is at most that
 * times the sum of the magnitudes of the steps, and so is the error of the mean of its distances.
 * The factor of 4 in sigma covers the terms of second order, which are below a thousandth where
 * sigma < 0.001; a larger sigma counts as unknown.
 */
#include "corrections/attenuation/trial_screen.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "corrections/attenuation/trial_lanes.h"

namespace clutter::corrections {
namespace {

constexpr int kChunkGates = 32;  // between two pruning checks
constexpr int kStride = 8;       // between groups visited one after the other
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kUnitRoundoff = 0x1p-53;
constexpr double kMaxSigma = 1e-3;

/*
 * Inputs for which powers and sums cannot overflow or underflow. With b from 0.1 to 1, z^b is
 * within 1e-110..1e30 and e = 0.46 b z^b dr a above 1e-130; the rates are 0 or above 1e-26. So,
 * where sigma is known, a step of the phase is 0 or above 1e-200, far above 2e-308, below which
 * rounding errors are not relative. The argument of the approximate power is within +-366; its two
 * roundings add less than 1e-13 to the relative error of the power, whose bound has a margin of
 * 2e-9.
 */
constexpr double kMinZ = 1e-110, kMaxZ = 1e30;
constexpr double kMinAlpha = 1e-3, kMaxAlpha = 10.0;
constexpr double kMinA = 1e-8, kMaxA = 1.0;
constexpr double kMinB = 0.1, kMaxB = 1.0;
constexpr double kMinSpacingKm = 1e-9, kMaxSpacingKm = 1e6;
constexpr double kMaxPhaseDeg = 1e4;

bool within(double value, double min, double max) {
    return value >= min && value <= max;  // false for NaN
}

Gates packGates(const Search& search) {
    Gates gates;
    for (int g = 0; g < search.ray.n; ++g) {
        if (!search.ray.isRain(g)) {
            continue;
        }
        gates.log2z.push_back(std::log2(search.ray.z[g]));
        gates.phase.push_back(search.ray.phidp[g] - search.phi0);
        gates.kind.push_back(search.isTried(g) ? GateKind::kVaried : GateKind::kFixed);
    }
    return gates;
}

class Screen {
  public:
    Screen(const Search& search, const Trials& trials);
    std::vector<int> candidates();

  private:
    void sharePowers();
    void setTerms(Terms& terms, int lane, const Coefficients& c) const;
    void arrange();
    Coefficients trialOf(int first, int lane) const;
    void startGroup(int first);
    void finishTerms(Terms& terms, int lane, const Coefficients& c);
    void raiseOnDemand(int from, int to);
    void walkGroup(int first);
    Terms& tried() { return terms_[index(GateKind::kVaried)]; }
    Terms& nominal() { return terms_[index(GateKind::kFixed)]; }
    bool isForward() const { return search_.method == kForward; }
    bool sharesPowers() const { return !gates_.sharedPowers.empty(); }
    double errorOf(int lane) const;
    double costOf(int lane) const { return walk_.cost[lane] / static_cast<double>(gates_.count()); }
    bool anyCanWin();
    void record(int first, bool finished);

    const Search& search_;
    const Trials& trials_;
    Gates gates_;
    double rounding_;  // relative error of sums over all gates
    double maxPhase_;  // magnitude of the measured phase and phi0
    double powerError_ = kPowerError;
    decltype(&walkBackwardSolution) kernel_ = walkBackwardSolution;
    std::vector<double> powers_;  // of the group, gate by gate
    Terms terms_[kGateKinds] = {};
    Walk walk_{};
    Lanes total_ = {};            // of e over the ray; backward solutions
    std::vector<int> order_;      // trials, sorted for grouping
    Lanes floor_ = {};            // lower bound of each lane's exact cost, unless that is NaN
    Lanes sigma_ = {};            // relative error of the phase's steps; backward solutions
    double bound_ = kInfinity;    // upper bound of the best exact cost
    std::vector<double> lowest_;  // lower bound of each trial's exact cost
};

Screen::Screen(const Search& search, const Trials& trials)
    : search_(search),
      trials_(trials),
      gates_(packGates(search)),
      rounding_((8.0 * gates_.count() + 64.0) * kUnitRoundoff),
      maxPhase_(std::fabs(search.phi0)),
      lowest_(trials.alpha.size(), kInfinity) {
    for (const double phase : gates_.phase) {
        maxPhase_ = std::max(maxPhase_, std::fabs(phase) + std::fabs(search.phi0));
    }
    const bool oneExponent =
        std::all_of(trials.b.begin(), trials.b.end(), [&](double b) { return b == trials.b[0]; });
    if (isForward()) {
        kernel_ = walkForwardSolution;
    } else if (oneExponent) {
        sharePowers();
    }
    if (!sharesPowers()) {
        powers_.resize(static_cast<std::size_t>(gates_.count()) * kLanes);
    }
    arrange();
}

/* Sorts trials by expected cost, so that whole groups can be dropped. */
void Screen::arrange() {
    double weight = 0.0, moment = 0.0;
    for (const double log2z : gates_.log2z) {
        const double power = std::exp2(kNominal.b * log2z);
        weight += power;
        moment += power * log2z;
    }
    const double typicalLog2z = moment / weight;
    std::vector<double> keys;
    for (int i = 0; i < trials_.count(); ++i) {
        const Coefficients c = trials_.at(i);
        const double rise = std::log2(c.a / c.alpha) + c.b * typicalLog2z;
        const double shape = sharesPowers() ? c.alpha : c.b;
        keys.push_back(search_.method == kProfile ? shape : rise);
    }
    order_.resize(keys.size());
    std::iota(order_.begin(), order_.end(), 0);
    std::sort(order_.begin(), order_.end(), [&keys](int i, int j) {
        return keys[static_cast<std::size_t>(i)] < keys[static_cast<std::size_t>(j)];
    });
}

/* The last lanes of the last group repeat the last trial. */
Coefficients Screen::trialOf(int first, int lane) const {
    const int position = std::min(first + lane, trials_.count() - 1);
    return trials_.at(order_[static_cast<std::size_t>(position)]);
}

/* The powers of the ray where b is the same in all trials. */
void Screen::sharePowers() {
    kernel_ = walkShared;
    powerError_ = 0.0;
    const Coefficients trial = trials_.at(0);
    for (int g = 0; g < search_.ray.n; ++g) {
        if (!search_.ray.isRain(g)) {
            continue;
        }
        const double b = search_.isTried(g) ? trial.b : kNominal.b;
        gates_.sharedPowers.push_back(std::pow(search_.ray.z[g], b));
    }
    setTerms(tried(), 0, trial);
    setTerms(nominal(), 0, kNominal);
    double total = 0.0;
    for (int g = 0; g < gates_.count(); ++g) {
        const std::size_t k = static_cast<std::size_t>(g);
        total += terms_[index(gates_.kind[k])].weight[0] * gates_.sharedPowers[k];
    }
    std::fill(total_, total_ + kLanes, total);
}

void Screen::setTerms(Terms& terms, int lane, const Coefficients& c) const {
    terms.exponent[lane] = c.b;
    terms.weight[lane] = kTwoWayNepers * c.b * search_.ray.dr;
    if (isForward()) {
        terms.weight[lane] *= c.a;
    }
}

/* Completes the terms of a lane, some of which need the total, and its sigma. */
void Screen::finishTerms(Terms& terms, int lane, const Coefficients& c) {
    const double d = powerError_ + rounding_;
    const double perAlpha = 2.0 * search_.ray.dr / c.alpha;
    const double total = total_[lane];
    double sigma = 0.0;
    if (search_.method == kProfile) {
        const double factor = profileFactor(c.b, c.alpha, search_.ray.dphi);
        terms.head[lane] = total * factor;
        terms.slope[lane] = factor - 1.0;
        terms.rate[lane] = perAlpha * (factor - 1.0);
        sigma = 4.0 * d * (1.0 + factor);
    } else if (search_.method == kFinalValue) {
        const double factor = finalFactor(c.b, c.alpha, search_.ray.dphi);
        terms.head[lane] = factor + c.a * total;
        terms.slope[lane] = c.a;
        terms.rate[lane] = perAlpha * c.a;
        sigma = 4.0 * d * (1.0 + c.a * total / factor);
    } else {
        terms.head[lane] = 1.0;
        terms.slope[lane] = 1.0;
        terms.rate[lane] = perAlpha * c.a;
    }
    sigma_[lane] = std::max(sigma_[lane], sigma);
}

void Screen::startGroup(int first) {
    for (int lane = 0; lane < kLanes; ++lane) {
        setTerms(tried(), lane, trialOf(first, lane));
        setTerms(nominal(), lane, kNominal);
    }
    if (!isForward() && !sharesPowers()) {
        raiseGates(gates_, terms_, 0, gates_.count(), powers_.data());
        sumGates(powers_.data(), gates_, terms_, total_);
    }
    std::fill(sigma_, sigma_ + kLanes, 0.0);
    for (int lane = 0; lane < kLanes; ++lane) {
        finishTerms(tried(), lane, trialOf(first, lane));
        if (search_.select != nullptr) {
            finishTerms(nominal(), lane, kNominal);
        }
    }
    walk_ = Walk{};
    std::fill(walk_.nearest, walk_.nearest + kLanes, kInfinity);
    std::fill(floor_, floor_ + kLanes, -kInfinity);
}

/* The forward solution needs no total: the powers of a dropped group's remaining gates are never
 * computed. */
void Screen::raiseOnDemand(int from, int to) {
    if (isForward()) {
        raiseGates(gates_, terms_, from, to, powers_.data());
    }
}

/* Bound of the error of a lane's cost up to the gate; infinite where unknown. */
double Screen::errorOf(int lane) const {
    const double d = powerError_ + rounding_;
    const double sigma =
        isForward() ? 4.0 * d * (1.0 + walk_.before[lane] / walk_.nearest[lane]) : sigma_[lane];
    if (!(sigma < kMaxSigma)) {
        return kInfinity;
    }
    const double reach = isForward() ? walk_.reach[lane] : walk_.phase[lane];
    return (sigma + 2.0 * rounding_) * reach + 2.0 * rounding_ * (costOf(lane) + reach + maxPhase_);
}

/* Costs only grow along the ray: a lane already worse than the best cannot win. */
bool Screen::anyCanWin() {
    bool any = false;
    for (int lane = 0; lane < kLanes; ++lane) {
        const double floor = costOf(lane) - errorOf(lane);
        if (floor > floor_[lane]) {
            floor_[lane] = floor;
        }
        any = any || !(floor_[lane] > bound_);
    }
    return any;
}

void Screen::record(int first, bool finished) {
    const int n = std::min(kLanes, trials_.count() - first);
    for (int lane = 0; finished && lane < n; ++lane) {
        const std::size_t position =
            static_cast<std::size_t>(first) + static_cast<std::size_t>(lane);
        const int trial = order_[position];
        const double cost = costOf(lane), error = errorOf(lane);
        // Trial 0 wins if its cost is NaN, which only a finite bound rules out.
        const bool unknown = trial == 0 && !std::isfinite(cost + error);
        lowest_[static_cast<std::size_t>(trial)] = unknown ? -kInfinity : floor_[lane];
        if (cost + error < bound_) {
            bound_ = cost + error;
        }
    }
}

void Screen::walkGroup(int first) {
    startGroup(first);
    const double* powers = sharesPowers() ? gates_.sharedPowers.data() : powers_.data();
    bool running = true;
    for (int g = 0; g < gates_.count() && running; g += kChunkGates) {
        const int end = std::min(g + kChunkGates, gates_.count());
        raiseOnDemand(g, end);
        kernel_(powers, gates_, terms_, g, end, walk_);
        running = anyCanWin();
    }
    record(first, running);
}

std::vector<int> Screen::candidates() {
    // The group of trial 0 first, so that it is never dropped; then groups from the whole range, so
    // that a good bound is found early.
    const int groups = (trials_.count() + kLanes - 1) / kLanes;
    const auto position = std::find(order_.begin(), order_.end(), 0) - order_.begin();
    const int firstGroup = static_cast<int>(position) / kLanes;
    walkGroup(firstGroup * kLanes);
    for (int offset = 0; offset < kStride; ++offset) {
        for (int k = offset; k < groups; k += kStride) {
            if (k != firstGroup) {
                walkGroup(k * kLanes);
            }
        }
    }
    std::vector<int> found;
    for (int i = 0; i < trials_.count(); ++i) {
        if (!(lowest_[static_cast<std::size_t>(i)] > bound_)) {
            found.push_back(i);
        }
    }
    return found;
}

}  // namespace

bool everyCostIsUndefined(const Search& search) {
    bool any = false;
    for (int g = 0; g < search.ray.n; ++g) {
        if (!search.ray.isRain(g)) {
            continue;
        }
        any = true;
        const double z = search.ray.z[g];
        if (!std::isfinite(search.ray.phidp[g]) || !(z >= 0.0) || std::isinf(z)) {
            return true;
        }
    }
    return !any;
}

bool canScreen(const Search& search, const Trials& trials) {
    const Ray& ray = search.ray;
    if (search.method < kProfile || search.method > kForward) {
        return false;
    }
    if (!within(ray.dr, kMinSpacingKm, kMaxSpacingKm) || !within(ray.dphi, 0.0, kMaxPhaseDeg) ||
        !within(search.phi0, -kMaxPhaseDeg, kMaxPhaseDeg)) {
        return false;
    }
    for (int g = 0; g < ray.n; ++g) {
        if (!ray.isRain(g)) {
            continue;
        }
        if (!within(ray.z[g], kMinZ, kMaxZ)) {
            return false;
        }
        if (!within(ray.phidp[g], -kMaxPhaseDeg, kMaxPhaseDeg)) {
            return false;
        }
    }
    for (int i = 0; i < trials.count(); ++i) {
        const Coefficients c = trials.at(i);
        if (!within(c.alpha, kMinAlpha, kMaxAlpha) || !within(c.a, kMinA, kMaxA) ||
            !within(c.b, kMinB, kMaxB)) {
            return false;
        }
    }
    return true;
}

std::vector<int> screenTrials(const Search& search, const Trials& trials) {
    return Screen(search, trials).candidates();
}

}  // namespace clutter::corrections

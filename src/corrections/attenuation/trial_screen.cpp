/*
 * The bounds. Let d be the relative error of z^b and of any sum of such positive terms, rounding of
 * both evaluations included. The denominator is off by at most
 *
 *   profile      2 d I F, of at least I              final value  d (U^b + 2 a I), of at least U^b
 *   forward      d S, of at least the nearest |1 - S| met, where S is the sum so far
 *
 * which bounds the relative error of each step of the phase; the phase is off by at most that times
 * the sum of the steps' sizes, and so is the mean of its distances. The factor of 4 in sigma leaves
 * room for the terms of second order, which count for less than a thousandth where sigma < 0.001; a
 * larger sigma is taken for "unknown".
 */
#include "corrections/attenuation/trial_screen.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "corrections/attenuation/trial_lanes.h"

namespace clutter::corrections {
namespace {

constexpr int kChunkGates = 32;  // between two looks at who is still in the race
constexpr int kStride = 8;       // between groups visited one after the other
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kUnitRoundoff = 0x1p-53;
constexpr double kLargestSigma = 1e-3;

/*
 * Inputs for which neither powers nor sums can leave the range of numbers. With b from 0.1 to 1,
 * z^b is within 1e-110..1e30 and e = 0.46 b z^b dr a above 1e-130; the rates are 0 or above 1e-26,
 * and so, wherever sigma is known, a step of the phase is 0 or above 1e-200: far from 2e-308, below
 * which roundings are not relative. The argument of the approximate power is within +-366; its two
 * roundings add less than 1e-13 to the power's relative error, which has 2e-9 to spare.
 */
constexpr double kLeastZ = 1e-110, kLargestZ = 1e30;
constexpr double kLeastExponent = 0.1, kLargestExponent = 1.0;
constexpr double kLeastStep = 1e-9, kLargestStep = 1e6;
constexpr double kLargestPhase = 1e4;

bool within(double value, double least, double largest) {
    return value >= least && value <= largest;  // false for NaN
}

Gates packGates(const Search& search) {
    Gates gates;
    for (int g = 0; g < search.ray.n; ++g) {
        if (!search.ray.takesPart(g)) continue;
        gates.log2z.push_back(std::log2(search.ray.z[g]));
        gates.phase.push_back(search.ray.phidp[g] - search.phi0);
        gates.kind.push_back(search.isTried(g) ? 0 : 1);
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
    bool isForward() const { return search_.method == kForward; }
    bool sharesPowers() const { return !gates_.sharedPowers.empty(); }
    double errorOf(int lane) const;
    double costOf(int lane) const { return walk_.cost[lane] / static_cast<double>(gates_.count()); }
    bool anyCanWin();
    void record(int first, bool finished);

    const Search& search_;
    const Trials& trials_;
    Gates gates_;
    double rounding_;     /* relative, of sums over all gates */
    double largestPhase_; /* measured, with phi0 */
    double powerError_ = kPowerError;
    decltype(&walkBackwardSolution) kernel_ = walkBackwardSolution;
    std::vector<double> powers_; /* of the group, gate by gate */
    Terms terms_[2] = {};
    Walk walk_{};
    Lanes total_ = {};           /* of e over the ray; backward solutions */
    std::vector<int> order_;     /* trials as they are grouped */
    Lanes floor_ = {};           /* the exact cost is a number not below it, or no number */
    Lanes sigma_ = {};           /* relative error of the phase's steps; backward solutions */
    double bound_ = kInfinity;   /* some trial's exact cost is not above it */
    std::vector<double> lowest_; /* of each trial: its exact cost is not below it */
};

Screen::Screen(const Search& search, const Trials& trials)
    : search_(search),
      trials_(trials),
      gates_(packGates(search)),
      rounding_((8.0 * gates_.count() + 64.0) * kUnitRoundoff),
      largestPhase_(std::fabs(search.phi0)),
      lowest_(trials.alpha.size(), kInfinity) {
    for (const double phase : gates_.phase) {
        largestPhase_ = std::max(largestPhase_, std::fabs(phase) + std::fabs(search.phi0));
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

/* Groups trials that will fare alike, so that whole groups can be given up. */
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

/* A group's last lanes repeat the last trial. */
Coefficients Screen::trialOf(int first, int lane) const {
    const int place = std::min(first + lane, trials_.count() - 1);
    return trials_.at(order_[static_cast<std::size_t>(place)]);
}

/* The only powers of the ray, when b does not change from trial to trial. */
void Screen::sharePowers() {
    kernel_ = walkShared;
    powerError_ = 0.0;
    const Coefficients trial = trials_.at(0);
    for (int g = 0; g < search_.ray.n; ++g) {
        if (!search_.ray.takesPart(g)) continue;
        const double b = search_.isTried(g) ? trial.b : kNominal.b;
        gates_.sharedPowers.push_back(std::pow(search_.ray.z[g], b));
    }
    setTerms(terms_[0], 0, trial);
    setTerms(terms_[1], 0, kNominal);
    double total = 0.0;
    for (int g = 0; g < gates_.count(); ++g) {
        const std::size_t k = static_cast<std::size_t>(g);
        total += terms_[gates_.kind[k]].weight[0] * gates_.sharedPowers[k];
    }
    std::fill(total_, total_ + kLanes, total);
}

void Screen::setTerms(Terms& terms, int lane, const Coefficients& c) const {
    terms.exponent[lane] = c.b;
    terms.weight[lane] = kTwoWayNepers * c.b * search_.ray.dr;
    if (isForward()) terms.weight[lane] *= c.a;
}

/* Completes a lane's terms, for which the total may be needed, and its sigma. */
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
        setTerms(terms_[0], lane, trialOf(first, lane));
        setTerms(terms_[1], lane, kNominal);
    }
    if (!isForward() && !sharesPowers()) {
        raiseGates(gates_, terms_, 0, gates_.count(), powers_.data());
        sumGates(powers_.data(), gates_, terms_, total_);
    }
    std::fill(sigma_, sigma_ + kLanes, 0.0);
    for (int lane = 0; lane < kLanes; ++lane) {
        finishTerms(terms_[0], lane, trialOf(first, lane));
        if (search_.select != nullptr) finishTerms(terms_[1], lane, kNominal);
    }
    walk_ = Walk{};
    std::fill(walk_.nearest, walk_.nearest + kLanes, kInfinity);
    std::fill(floor_, floor_ + kLanes, -kInfinity);
}

/* The forward solution needs no total: powers beyond the gate where a group is given up are never
 * computed. */
void Screen::raiseOnDemand(int from, int to) {
    if (isForward()) raiseGates(gates_, terms_, from, to, powers_.data());
}

/* How far the cost of a lane may be off so far; infinite where that is not known. */
double Screen::errorOf(int lane) const {
    const double d = powerError_ + rounding_;
    const double sigma =
        isForward() ? 4.0 * d * (1.0 + walk_.before[lane] / walk_.nearest[lane]) : sigma_[lane];
    if (!(sigma < kLargestSigma)) return kInfinity;
    const double reach = isForward() ? walk_.reach[lane] : walk_.phase[lane];
    return (sigma + 2.0 * rounding_) * reach +
           2.0 * rounding_ * (costOf(lane) + reach + largestPhase_);
}

/* Costs only grow along the ray: a lane that is beyond the best already cannot win. */
bool Screen::anyCanWin() {
    bool any = false;
    for (int lane = 0; lane < kLanes; ++lane) {
        const double floor = costOf(lane) - errorOf(lane);
        if (floor > floor_[lane]) floor_[lane] = floor;
        any = any || !(floor_[lane] > bound_);
    }
    return any;
}

void Screen::record(int first, bool finished) {
    const int n = std::min(kLanes, trials_.count() - first);
    for (int lane = 0; finished && lane < n; ++lane) {
        const std::size_t place = static_cast<std::size_t>(first) + static_cast<std::size_t>(lane);
        const int trial = order_[place];
        const double cost = costOf(lane), error = errorOf(lane);
        // Trial 0 wins if its cost is no number, which only a finite bound rules out.
        const bool unknown = trial == 0 && !std::isfinite(cost + error);
        lowest_[static_cast<std::size_t>(trial)] = unknown ? -kInfinity : floor_[lane];
        if (cost + error < bound_) bound_ = cost + error;
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
    // The group of trial 0 first, so that it is not given up; then from all over the range, so that
    // a good bound is found soon.
    const int groups = (trials_.count() + kLanes - 1) / kLanes;
    const auto place = std::find(order_.begin(), order_.end(), 0) - order_.begin();
    const int firstGroup = static_cast<int>(place) / kLanes;
    walkGroup(firstGroup * kLanes);
    for (int offset = 0; offset < kStride; ++offset) {
        for (int k = offset; k < groups; k += kStride) {
            if (k != firstGroup) walkGroup(k * kLanes);
        }
    }
    std::vector<int> found;
    for (int i = 0; i < trials_.count(); ++i) {
        if (!(lowest_[static_cast<std::size_t>(i)] > bound_)) found.push_back(i);
    }
    return found;
}

}  // namespace

bool everyCostIsUndefined(const Search& search) {
    bool any = false;
    for (int g = 0; g < search.ray.n; ++g) {
        if (!search.ray.takesPart(g)) continue;
        any = true;
        const double z = search.ray.z[g];
        if (!std::isfinite(search.ray.phidp[g]) || !(z >= 0.0) || std::isinf(z)) return true;
    }
    return !any;
}

bool canScreen(const Search& search, const Trials& trials) {
    const Ray& ray = search.ray;
    if (search.method < kProfile || search.method > kForward) return false;
    if (!within(ray.dr, kLeastStep, kLargestStep) || !within(ray.dphi, 0.0, kLargestPhase) ||
        !within(search.phi0, -kLargestPhase, kLargestPhase)) {
        return false;
    }
    for (int g = 0; g < ray.n; ++g) {
        if (!ray.takesPart(g)) continue;
        if (!within(ray.z[g], kLeastZ, kLargestZ)) return false;
        if (!within(ray.phidp[g], -kLargestPhase, kLargestPhase)) return false;
    }
    for (int i = 0; i < trials.count(); ++i) {
        const Coefficients c = trials.at(i);
        if (!within(c.alpha, 1e-3, 10.0) || !within(c.a, 1e-8, 1.0) ||
            !within(c.b, kLeastExponent, kLargestExponent)) {
            return false;
        }
    }
    return true;
}

std::vector<int> screenTrials(const Search& search, const Trials& trials) {
    return Screen(search, trials).candidates();
}

}  // namespace clutter::corrections

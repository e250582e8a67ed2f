/*
 * trial_lanes.h - row kernels that advance a group of trials of the attenuation search along a ray.
 * Every lane is one trial.
 *
 * The three solutions have one form. With e = 0.46 b z^b dr (times a in the forward solution), P
 * its sum over the gates before (forward: up to) the current one, and I the sum over all gates,
 *
 *   2 ah dr / alpha = rate z^b / (head - slope P)
 *
 *   profile      rate 2 dr (F - 1) / alpha   head I F            slope F - 1
 *   final value  rate 2 dr a / alpha         head U^b + a I      slope a
 *   forward      rate 2 dr a / alpha         head 1              slope 1
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_LANES_H
#define CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_LANES_H

#include <cstddef>
#include <vector>

namespace clutter::corrections {

constexpr int kLanes = 16;

using Lanes = double[kLanes];

/* The coefficients of a group's trials at one kind of gates. */
struct Terms {
    Lanes exponent;  // b
    Lanes weight;    // e / z^b
    Lanes head;
    Lanes slope;
    Lanes rate;
};

/* The sums of a group up to some gate of the ray. */
struct Walk {
    Lanes before;   // P
    Lanes phase;    // rebuilt, above phi0
    Lanes cost;     // sum of distances to the measured phase
    Lanes reach;    // sum of the magnitudes of the phase's steps; forward solution
    Lanes nearest;  // smallest magnitude of a denominator; forward solution
};

/* Whether the coefficients of a gate vary from trial to trial. */
enum class GateKind : unsigned char { kVaried, kFixed };
inline constexpr std::size_t kGateKinds = 2;

constexpr std::size_t index(GateKind kind) {
    return static_cast<std::size_t>(kind);
}

/* The precipitation gates of a ray, packed. */
struct Gates {
    std::vector<double> log2z;
    std::vector<double> phase;         // measured, above phi0
    std::vector<GateKind> kind;        // terms of the gate are terms[index(kind)]
    std::vector<double> sharedPowers;  // exact z^b where all trials have the same b; else empty

    int count() const { return static_cast<int>(log2z.size()); }
};

/* Largest relative error of approximatePowers(). */
constexpr double kPowerError = 4e-9;

/* powers[j] = 2^x[j], for |x| < 1000. */
void approximatePowers(const double* x, double* powers, int n);

/* powers[g][lane] = z^b, approximately, at gates from .. to - 1. */
void raiseGates(const Gates& gates, const Terms* terms, int from, int to, double* powers);

/* total[lane] = the sum of e over all gates. */
void sumGates(const double* powers, const Gates& gates, const Terms* terms, double* total);

/* Advance a group from one gate to another. walkShared: powers holds one value for each gate, and
 * the solution is not the forward one. */
void walkShared(const double* powers, const Gates& gates, const Terms* terms, int from, int to,
                Walk& walk);
void walkBackwardSolution(const double* powers, const Gates& gates, const Terms* terms, int from,
                          int to, Walk& walk);
void walkForwardSolution(const double* powers, const Gates& gates, const Terms* terms, int from,
                         int to, Walk& walk);

}  // namespace clutter::corrections

#endif

/*
 * trial_lanes.h - row kernels that take a few trials of the attenuation search along a ray, side by
 * side. Every lane is one trial.
 *
 * One form serves the three solutions. With e = 0.46 b z^b dr (times a in the forward solution) and
 * P its sum over the gates before (forward: up to) the current one, I the sum over all,
 *
 *   2 ah dr / alpha = rate z^b / (head - slope P)
 *
 *   profile      rate 2 dr (F - 1) / alpha   head I F            slope F - 1
 *   final value  rate 2 dr a / alpha         head U^b + a I      slope a
 *   forward      rate 2 dr a / alpha         head 1              slope 1
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_LANES_H
#define CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_LANES_H

#include <vector>

namespace clutter::corrections {

constexpr int kLanes = 16;

using Lanes = double[kLanes];

/* What the trials of a group need at a gate, for one kind of gates. */
struct Terms {
    Lanes exponent; /* b */
    Lanes weight;   /* e / z^b */
    Lanes head;
    Lanes slope;
    Lanes rate;
};

/* A group on its way along the ray. */
struct Walk {
    Lanes before;  /* P */
    Lanes phase;   /* rebuilt, above phi0 */
    Lanes cost;    /* sum of distances */
    Lanes reach;   /* sum of the sizes of the phase's steps; forward solution */
    Lanes nearest; /* smallest denominator met; forward solution */
};

/* The gates that take part, packed. */
struct Gates {
    std::vector<double> log2z;
    std::vector<double> phase;        /* measured, above phi0 */
    std::vector<unsigned char> kind;  /* index of the terms: 0 tried, 1 nominal */
    std::vector<double> sharedPowers; /* z^b where all trials have one b, exact; else empty */

    int count() const { return static_cast<int>(log2z.size()); }
};

/* Largest relative error of approximatePowers(). */
constexpr double kPowerError = 4e-9;

/* powers[j] = 2^x[j], for |x| < 1000. */
void approximatePowers(const double* x, double* powers, int n);

/* powers[g][lane] = z^b, approximately, at gates from..to - 1. */
void raiseGates(const Gates& gates, const Terms* terms, int from, int to, double* powers);

/* total[lane] = the sum of e over all gates. */
void sumGates(const double* powers, const Gates& gates, const Terms* terms, double* total);

/* Take a group on from one gate to another. Shared: powers holds one value a gate, and the solution
 * is not the forward one. */
void walkShared(const double* powers, const Gates& gates, const Terms* terms, int from, int to,
                Walk& walk);
void walkBackwardSolution(const double* powers, const Gates& gates, const Terms* terms, int from,
                          int to, Walk& walk);
void walkForwardSolution(const double* powers, const Gates& gates, const Terms* terms, int from,
                         int to, Walk& walk);

}  // namespace clutter::corrections

#endif

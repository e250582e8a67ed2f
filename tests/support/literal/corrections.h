/*
 * corrections.h - plain, slow definitions of the corrections along rays: one value at a
 * time, in the order of the formulas, with nothing precomputed or skipped.
 */
#ifndef TESTS_SUPPORT_LITERAL_CORRECTIONS_H
#define TESTS_SUPPORT_LITERAL_CORRECTIONS_H

#include <vector>

namespace literal {

/* Mean phase of the first run of nwin gates of each ray that the flags (1: qualifies) allow. */
float initialPhase(const float* phidp, const std::vector<int>& qualifies, int ngates, int nrays,
                   int nwin);

void unfold(float* phidp, const float* cls, int ngates, int nrays);

using Values = std::vector<double>;

/* One ray; select may be empty. */
struct AttenuationRay {
    Values z, phidp, mask, select;
    double dr = 0.25;
    double dphi = 0.0;
    double phi0 = 0.0;
    int n() const { return static_cast<int>(z.size()); }
};

/* constraint receives the by-product of method 1. */
void attenuation(const AttenuationRay& ray, const Values& alpha, const Values& a, const Values& b,
                 int method, Values& ah, double& constraint);

struct TrialResult {
    Values alpha, a, b, ah, rebuilt;
    double cost = 0.0;
};

TrialResult evaluateTrial(const AttenuationRay& ray, double alpha, double a, double b, int method);

/* The first of the cheapest trials. */
int bestTrial(const AttenuationRay& ray, const Values& alpha, const Values& a, const Values& b,
              int method);

/* Sets phi0 and dphi of a ray; false without two runs of 20 gates. */
bool measurePhase(AttenuationRay& ray);

/* A relation with coefficients c at one gate. */
float rainRate(const double* c, int relation, float dbz, float zdr, float kdp);

/* Matches gates against profiles (profile j, level i at i + 1800 j). */
Values matchProfiles(const Values& zin, const Values& range, const Values& freezing,
                     double elevation, double beamwidth, const Values& profiles);

}  // namespace literal

#endif

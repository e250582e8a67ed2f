/*
 * attenuation.h - specific attenuation along one ray, for one set of coefficients.
 *
 * The exact evaluation: double precision, sums in the stated order, the C library's power.
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_ATTENUATION_H
#define CLUTTER_CORRECTIONS_ATTENUATION_ATTENUATION_H

namespace clutter::corrections {

enum Method { kNoMethod = -1, kProfile = 0, kFinalValue = 1, kForward = 2, kPhaseSlope = 3 };

/* 0.46, approximately 2 ln 10 / 10: from one-way decibels to the normalised integral. */
constexpr double kTwoWayNepers = 0.46;

/* Ah = alpha Kdp and Ah = a z^b. */
struct Coefficients {
    double alpha;  // dB/deg
    double a;
    double b;
};

constexpr Coefficients kNominal{0.073, 3e-05, 0.78};

/* One ray: n gates of dr km. A mask of exactly 0.0 marks a precipitation gate. */
struct Ray {
    const double* z;  // linear reflectivity
    const double* mask;
    const double* phidp;  // degrees
    int n;
    double dr;
    double dphi;  // rise of the phase over the ray, degrees

    bool isRain(int g) const { return mask[g] == 0.0; }
};

/* The coefficients of every gate. */
struct CoefficientArrays {
    const double* alpha;
    const double* a;
    const double* b;
};

/* F of the profile solution: the ratio of the normalised reflectivities at the ray's ends. */
double profileFactor(double b, double alpha, double dphi);

/* U^b of the final-value solution. */
double finalFactor(double b, double alpha, double dphi);

/* Writes ah at every gate: 0 at other than precipitation gates and for an unknown method. Only the
 * final-value solution writes constraintSum. */
void computeAttenuation(const Ray& ray, const CoefficientArrays& coefficients, int method,
                        double* ah, double& constraintSum);

}  // namespace clutter::corrections

#endif

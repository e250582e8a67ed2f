/*
 * The four solutions for the specific attenuation of a ray.
 */
#include "corrections/attenuation/attenuation.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "clutterclassifier/Cradarpro.h"

namespace clutter::corrections {
namespace {

constexpr int kSlopeReach = 3;  // gates on each side of the slope's gate

/* z^b at precipitation gates. */
std::vector<double> powersOf(const Ray& ray, const double* b) {
    std::vector<double> powers(static_cast<std::size_t>(ray.n), 0.0);
    for (int g = 0; g < ray.n; ++g) {
        if (ray.isRain(g)) {
            powers[static_cast<std::size_t>(g)] = std::pow(ray.z[g], b[g]);
        }
    }
    return powers;
}

/* A function of two coefficients, cached because they rarely change from gate to gate. */
class Factor {
  public:
    Factor(double (*compute)(double, double, double), double dphi)
        : compute_(compute), dphi_(dphi) {}

    double at(double b, double alpha) {
        if (b == b_ && alpha == alpha_) {
            return value_;
        }
        b_ = b;
        alpha_ = alpha;
        return value_ = compute_(b, alpha, dphi_);
    }

  private:
    double (*compute_)(double, double, double);
    double dphi_;
    double b_ = NAN, alpha_ = NAN, value_ = NAN;
};

void solveProfile(const Ray& ray, const CoefficientArrays& c, double* ah) {
    const std::vector<double> powers = powersOf(ray, c.b);
    const auto term = [&](int g) {
        return kTwoWayNepers * c.b[g] * powers[static_cast<std::size_t>(g)] * ray.dr;
    };
    double total = 0.0;
    for (int g = 0; g < ray.n; ++g) {
        if (ray.isRain(g)) {
            total += term(g);
        }
    }
    Factor factor(profileFactor, ray.dphi);
    double beyond = 0.0;
    for (int g = ray.n - 1; g >= 0; --g) {
        if (!ray.isRain(g)) {
            continue;
        }
        beyond += term(g);
        const double rise = factor.at(c.b[g], c.alpha[g]) - 1.0;
        ah[g] = powers[static_cast<std::size_t>(g)] * rise / (total + rise * beyond);
    }
}

/* Returns the constraint: the sum over the whole ray plus the factor of the last gate. */
double solveFinalValue(const Ray& ray, const CoefficientArrays& c, double* ah) {
    const std::vector<double> powers = powersOf(ray, c.b);
    Factor factor(finalFactor, ray.dphi);
    double beyond = 0.0;
    for (int g = ray.n - 1; g >= 0; --g) {
        if (!ray.isRain(g)) {
            continue;
        }
        const double power = powers[static_cast<std::size_t>(g)];
        beyond += kTwoWayNepers * c.b[g] * power * ray.dr;
        ah[g] = c.a[g] * power / (factor.at(c.b[g], c.alpha[g]) + c.a[g] * beyond);
    }
    double sum = 0.0, last = 0.0;
    for (int g = 0; g < ray.n; ++g) {
        if (!ray.isRain(g)) {
            continue;
        }
        sum += kTwoWayNepers * c.a[g] * c.b[g] * powers[static_cast<std::size_t>(g)] * ray.dr;
        last = factor.at(c.b[g], c.alpha[g]);
    }
    return sum + last;
}

void solveForward(const Ray& ray, const CoefficientArrays& c, double* ah) {
    double sum = 0.0;
    for (int g = 0; g < ray.n; ++g) {
        if (!ray.isRain(g)) {
            continue;
        }
        const double power = std::pow(ray.z[g], c.b[g]);
        sum += kTwoWayNepers * c.b[g] * c.a[g] * power * ray.dr;
        ah[g] = c.a[g] * power / (1.0 - sum);
    }
}

void followPhaseSlope(const Ray& ray, const CoefficientArrays& c, double* ah) {
    int run = 0;
    for (int last = 0; last < ray.n; ++last) {
        run = ray.isRain(last) ? run + 1 : 0;
        if (run < 2 * kSlopeReach + 1) {
            continue;
        }
        const int g = last - kSlopeReach;
        const double rise = ray.phidp[g + kSlopeReach] - ray.phidp[g - kSlopeReach];
        const double slope = c.alpha[g] * rise / (2.0 * ray.dr * (2 * kSlopeReach));
        ah[g] = slope < 0.0 ? 0.0 : slope;
    }
}

}  // namespace

double profileFactor(double b, double alpha, double dphi) {
    return std::pow(10.0, 0.1 * b * alpha * dphi);
}

double finalFactor(double b, double alpha, double dphi) {
    return std::pow(std::pow(10.0, -0.1 * alpha * dphi), b);
}

void computeAttenuation(const Ray& ray, const CoefficientArrays& coefficients, int method,
                        double* ah, double& constraintSum) {
    std::fill(ah, ah + ray.n, 0.0);
    if (method == kProfile) {
        solveProfile(ray, coefficients, ah);
    }
    if (method == kFinalValue) {
        constraintSum = solveFinalValue(ray, coefficients, ah);
    }
    if (method == kForward) {
        solveForward(ray, coefficients, ah);
    }
    if (method == kPhaseSlope) {
        followPhaseSlope(ray, coefficients, ah);
    }
}

}  // namespace clutter::corrections

void Cradarpro::Ah(const double* z, const double* mask, const double* phidp, int n,
                   const double* alpha, const double* a, const double* b, double dphi, double dr,
                   double* ah, int method) {
    clutter::corrections::computeAttenuation({z, mask, phidp, std::max(n, 0), dr, dphi},
                                             {alpha, a, b}, method, ah, ahConstraintSum);
}

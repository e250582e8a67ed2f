/*
 * The built-in shapes as loops over values.
 */
#include "fuzzy/functions/shapes.h"

#include <cmath>
#include <cstring>

#include "base/kernel.h"

namespace clutter::fuzzy {
namespace {

constexpr float kTrapezoidFloor = 1e-10f;

/* exp of a single-precision quotient: the quotient is what hosts compare against. */
double bell(float x, float sigma, float centre) {
    const float quotient = -(x - centre) * (x - centre) / ((sigma + sigma) * sigma);
    return std::exp(static_cast<double>(quotient));
}

}  // namespace

Shape shapeOf(const char* type) {
    struct Keyword {
        const char* text;
        Shape shape;
    };
    static constexpr Keyword kKeywords[] = {
        {"same", Shape::kSame},         {"complement", Shape::kComplement},
        {"gaussian", Shape::kGaussian}, {"gaussian2s", Shape::kGaussian2s},
        {"ones", Shape::kOnes},         {"trapezoidal", Shape::kTrapezoidal},
    };
    for (const Keyword& keyword : kKeywords) {
        if (std::strcmp(type, keyword.text) == 0) {
            return keyword.shape;
        }
    }
    return Shape::kTable;
}

CLUTTER_KERNEL void evaluateSame(const float* x, double* degrees, int n) {
    for (int i = 0; i < n; ++i) {
        degrees[i] = static_cast<double>(x[i]);
    }
}

CLUTTER_KERNEL void evaluateComplement(const float* x, double* degrees, int n) {
    for (int i = 0; i < n; ++i) {
        degrees[i] = static_cast<double>(1.0f - x[i]);
    }
}

void evaluateGaussian(const float* params, const float* x, double* degrees, int n) {
    for (int i = 0; i < n; ++i) {
        degrees[i] = bell(x[i], params[0], params[1]);
    }
}

/* Both flanks fall off from the left shoulder. NaN is neither below the left shoulder nor above the
 * right one: plateau. */
void evaluateGaussian2s(const float* params, const float* x, double* degrees, int n) {
    const float left = params[1];
    const float right = params[3];
    for (int i = 0; i < n; ++i) {
        const bool flank = x[i] < left || x[i] > right;
        degrees[i] = flank ? bell(x[i], params[0], left) : 1.0;
    }
}

void evaluateOnes(double* degrees, int n) {
    for (int i = 0; i < n; ++i) {
        degrees[i] = 1.0;
    }
}

/* Plateau and NaN write nothing: the degree stays what it was. */
void evaluateTrapezoid(const float* params, const float* x, double* degrees, int n) {
    const float a = params[0], b = params[1], c = params[2], d = params[3];
    if (c > d || b > c || a > b) {
        for (int i = 0; i < n; ++i) {
            degrees[i] = -1.0;
        }
        return;
    }
    const float height = 1.0f - kTrapezoidFloor;
    for (int i = 0; i < n; ++i) {
        const float value = x[i];
        if (value <= a || value >= d) {
            degrees[i] = static_cast<double>(kTrapezoidFloor);
        } else if (a < value && value < b) {
            degrees[i] = static_cast<double>((value - a) * (height / (b - a)) + kTrapezoidFloor);
        } else if (c < value && value < d) {
            degrees[i] = static_cast<double>((value - d) * (height / (c - d)) + kTrapezoidFloor);
        }
    }
}

}  // namespace clutter::fuzzy

/*
 * One membership function: its shapes as operations of the public class.
 */
#include "clutterclassifier/Cmfs.h"

#include "fuzzy/functions/membership.h"
#include "fuzzy/functions/shapes.h"

using namespace clutter;

Cmfs::Cmfs() : name{" "}, type{" "}, params{} {}

Cmfs::~Cmfs() {}

void Cmfs::same(float* x, double* out, int n) {
    if (x != nullptr && out != nullptr) {
        fuzzy::evaluateSame(x, out, n);
    }
}

void Cmfs::complement(float* x, double* out, int n) {
    if (x != nullptr && out != nullptr) {
        fuzzy::evaluateComplement(x, out, n);
    }
}

void Cmfs::gaussian(float* x, double* out, int n) {
    if (x != nullptr && out != nullptr) {
        fuzzy::evaluateGaussian(params, x, out, n);
    }
}

void Cmfs::gaussian2s(float* x, double* out, int n) {
    if (x != nullptr && out != nullptr) {
        fuzzy::evaluateGaussian2s(params, x, out, n);
    }
}

void Cmfs::ones(float*, double* out, int n) {
    if (out != nullptr) {
        fuzzy::evaluateOnes(out, n);
    }
}

void Cmfs::trapezoidal(float* x, double* out, int n) {
    if (x != nullptr && out != nullptr) {
        fuzzy::evaluateTrapezoid(params, x, out, n);
    }
}

void Cmfs::interp(double* px, double* py, int np, float* x, double* out, int n) {
    if (px == nullptr || py == nullptr || np < 1 || x == nullptr || out == nullptr) {
        return;
    }
    const fuzzy::Table table({{px, px + np}, {py, py + np}});
    table.evaluate(x, out, n);
}

/*
 * classification.h - the plain, slow definitions that the fast code is compared with, bit for bit.
 *
 * One value at a time, in the order of the formulas, with nothing precomputed or skipped.
 */
#ifndef TESTS_SUPPORT_LITERAL_CLASSIFICATION_H
#define TESTS_SUPPORT_LITERAL_CLASSIFICATION_H

#include <string>
#include <vector>

namespace literal {

void meanStd(const float* x, int n, float& mean, float& std);

void plainTexture(const float* in, int ngates, int nrays, float* out, int size);

void maskedTexture(const float* in, const float* mask, int ngates, int nrays, float* out,
                   int wgates, int wrays);

double interpolate(const std::vector<double>& px, const std::vector<double>& py, float x);

/* One membership function: a built-in shape with parameters, or the points of a table. */
struct Function {
    std::string shape;
    float params[5] = {};
    std::vector<double> px, py;
};

/* Degrees of n values; a trapezoid's plateau keeps what degrees held. */
void degreesOf(const Function& function, const float* x, double* degrees, int n);

/* A rule base: functions[input][index], rules[rule][input] (negative: not used), one class per
 * rule. */
struct RuleBase {
    std::vector<std::vector<Function>> functions;
    std::vector<std::vector<int>> rules;
    std::vector<float> classes;
    std::vector<double> weights;
    bool product = true;
};

void classify(const RuleBase& base, const std::vector<const float*>& inputs, float* out, int n);

void isolatedPixels(const float* cls, float* flags, int ngates, int nrays, int wgates, int wrays,
                    int maxcount);

/* Reads a membership file as the C library would in the "C" locale. */
Function readFunction(const std::string& path);

/* The entry point's arguments; absent fields are null. */
struct Scan {
    int nrays = 0, ngates = 0;
    const double* fields[7] = {};  // zhh, zdr, phidp, rhohv, velocity, ldr, pdf
    double gateSize = 250.0;       // ranges[1] - ranges[0]
    double params[3] = {};
};

/* The classes that the entry point is to give. */
std::vector<double> classifyScan(const Scan& scan, const std::string& membershipDirectory);

}  // namespace literal

#endif

/*
 * literal_polar.h - a polar data file read the plain way: one fread() after the other into buffers
 * that are never cleared, one formula a gate.
 */
#ifndef BENCH_LITERAL_POLAR_H
#define BENCH_LITERAL_POLAR_H

#include <string>
#include <vector>

namespace literal {

struct PolarScan {
    int product = 0, nrays = 0, ngates = 0;
    float nyquist = 0.0f;
    std::vector<float> angles;
    std::vector<std::vector<float>> fields;
};

/* The values of one packed gate, in the order of the product's records; empty for a layout in which
 * the product has no gates. */
std::vector<float> unpackGate(int product, int layout, const unsigned char* b, float nyquist);

/* Bytes of a gate; 0 where unpackGate() gives nothing. */
int packedBytes(int product, int layout);

/* A sound or cut file of a known product, without correction. */
PolarScan readPolar(const std::string& path, int layout);

}  // namespace literal

#endif

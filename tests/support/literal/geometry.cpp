/* Sampling of a record by its definition. */
#include "support/literal/geometry.h"

#include <cmath>

#include "clutterclassifier/Cpluvek.h"

namespace literal {

namespace {

const double kPi = std::acos(-1.0);

int rayAt(const Cpluvek& record, float azimuth) {
    return nearest(record.angles + 1, record.nrays, static_cast<float>(azimuth * kPi / 180));
}

bool moveInto(const Cpluvek& record, float invalid, int ray, int gate, int wgates, int wrays,
              float& range, float& azimuth) {
    for (int dr = -wrays / 2; dr <= wrays / 2; ++dr) {
        for (int dg = -wgates / 2; dg <= wgates / 2; ++dg) {
            int g = gate + dg;
            if (g < 0) {
                g = 0;
            }
            if (g > record.ngates - 1) {
                g = record.ngates - 1;
            }
            int r = ray + dr;
            while (r < 0) {
                r += record.nrays;
            }
            while (r >= record.nrays) {
                r -= record.nrays;
            }
            if (record.data[r * record.ngates + g] != invalid) {
                range = g * record.gatesize;
                azimuth = static_cast<float>(record.angles[1 + r] * 180.0 / kPi);
                return true;
            }
        }
    }
    return false;
}

}  // namespace

int nearest(const float* x, int n, float target) {
    int index = 0;
    double least = std::fabs(static_cast<double>(x[0]) - target);
    for (int i = 1; i < n; ++i) {
        const double distance = std::fabs(static_cast<double>(x[i]) - target);
        if (distance < least) {
            least = distance;
            index = i;
        }
    }
    return index;
}

void extractRangeAzimuth(const Cpluvek& record, const float* ranges, const float* azimuths,
                         float* out, int n) {
    for (int i = 0; i < n; ++i) {
        const int ray = rayAt(record, azimuths[i]);
        const float quotient = ranges[i] / record.gatesize;
        long long gate = record.ngates - 1;
        if (quotient < record.ngates) {
            gate = static_cast<long long>(quotient);
        }
        if (std::isnan(quotient)) {
            gate = -1000000000;
        }
        long long at = static_cast<long long>(ray) * record.ngates + gate;
        if (at < 0) {
            at = 0;
        }
        out[i] = record.data[at];
    }
}

void findValid(const Cpluvek& record, const float* ranges, const float* azimuths, float invalid,
               int n, float* outranges, float* outazimuths, int wgates, int wrays) {
    for (int i = 0; i < n; ++i) {
        outranges[i] = ranges[i];
        outazimuths[i] = azimuths[i];
        const int ray = rayAt(record, azimuths[i]);
        const float quotient = ranges[i] / record.gatesize;
        if (!(std::fabs(quotient) < 1e9)) {
            continue;
        }
        const int gate = static_cast<int>(quotient);
        const long long at = static_cast<long long>(ray) * record.ngates + gate;
        if (at < 0 || at >= static_cast<long long>(record.nrays) * record.ngates) {
            continue;
        }
        if (record.data[at] != invalid) {
            continue;
        }
        moveInto(record, invalid, ray, gate, wgates, wrays, outranges[i], outazimuths[i]);
    }
}

}  // namespace literal

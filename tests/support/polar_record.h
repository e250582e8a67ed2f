/*
 * polar_record.h - small records to try the geometry on.
 */
#ifndef CLUTTER_TESTS_SUPPORT_POLAR_RECORD_H
#define CLUTTER_TESTS_SUPPORT_POLAR_RECORD_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "clutterclassifier/Cpluvek.h"

namespace clutter::test {

/* Fills a new record: value 100 r + g at gate g of ray r, rays 0.1 rad apart from 0. */
inline void fillPolar(Cpluvek& record, int nrays, int ngates, float gatesize = 100.0f) {
    record.nrays = nrays;
    record.ngates = ngates;
    record.coordtype = 0;
    record.firstgate = 0;
    record.gatesize = gatesize;
    record.nrecords = 1;
    record.data = new float[static_cast<std::size_t>(nrays) * static_cast<std::size_t>(ngates)];
    record.angles = new float[static_cast<std::size_t>(nrays) + 1];
    record.angles[0] = 0.5f;
    for (int r = 0; r < nrays; ++r) {
        record.angles[1 + r] = 0.1f * static_cast<float>(r);
        for (int g = 0; g < ngates; ++g) {
            record.data[r * ngates + g] = static_cast<float>(100 * r + g);
        }
    }
}

/* Calls an operation that is safe on a null object, where neither compiler nor sanitizer can see
 * that the object is null. */
template <class Call>
__attribute__((no_sanitize("undefined"))) auto onNullRecord(Call call) {
    Cpluvek* volatile nowhere = nullptr;
    return call(nowhere);
}

inline std::vector<float> valuesOf(const Cpluvek& record) {
    return {record.data, record.data + record.nrays * record.ngates};
}

inline std::vector<float> azimuthsOf(const Cpluvek& record) {
    return {record.angles + 1, record.angles + 1 + record.nrays};
}

}  // namespace clutter::test

#endif

/*
 * require.h - what a fuzzer asserts: a condition with a sentence, arrays that are the same bits.
 */
#ifndef CLUTTER_FUZZ_SUPPORT_REQUIRE_H
#define CLUTTER_FUZZ_SUPPORT_REQUIRE_H

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "clutterclassifier/Cpluvek.h"

namespace clutter::fuzz {

/* Stops the run: the fuzzer keeps the input. */
inline void require(bool holds, const char* sentence) {
    if (holds) {
        return;
    }
    std::fprintf(stderr, "does not hold: %s\n", sentence);
    std::abort();
}

/* Every NaN counts as the same one: which of two operands' payloads a sum keeps is the compiler's.
 */
inline bool sameBits(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

template <class Count>
bool sameBits(const float* a, const float* b, Count n) {
    for (Count i = 0; i < n; ++i) {
        if (!sameBits(a[i], b[i])) {
            return false;
        }
    }
    return true;
}

inline int cellsOf(const Cpluvek& record) {
    return record.nrays * record.ngates;
}

/* Two records are the same scan: sizes, angles and values. */
inline void requireSameScan(const Cpluvek& a, const Cpluvek& b) {
    require(a.nrays == b.nrays && a.ngates == b.ngates, "a record keeps its sizes");
    require((a.data == nullptr) == (b.data == nullptr), "a record keeps its values");
    if (a.data == nullptr) {
        return;
    }
    require(sameBits(a.angles, b.angles, a.nrays + 1), "a record keeps its angles");
    require(sameBits(a.data, b.data, cellsOf(a)), "values come back as they were written");
}

}  // namespace clutter::fuzz

#endif

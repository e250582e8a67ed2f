/*
 * random_fill.h - random numbers from the C library's generator, which the whole process shares.
 */
#ifndef CLUTTER_DSP_SEARCH_RANDOM_FILL_H
#define CLUTTER_DSP_SEARCH_RANDOM_FILL_H

#include <cstdlib>

namespace clutter::dsp {

inline constexpr double kRandomRange = 2147483647.0;

/* srand(rand() + time(0)) */
void reseed();

/* Reseeds, then fills n values uniformly. The product rand() (max - min) has the array's precision,
 * the rest is double. */
template <class T>
void fillUniform(T* out, int n, T min, T max) {
    reseed();
    for (int i = 0; out != nullptr && i < n; ++i) {
        const T product = static_cast<T>(std::rand()) * (max - min);
        out[i] =
            static_cast<T>(static_cast<double>(product) / kRandomRange + static_cast<double>(min));
    }
}

/* A normally distributed number (one branch of the Box-Muller transform). */
double drawNormal(double mean, double deviation);

}  // namespace clutter::dsp

#endif

/*
 * random_fill.h - random numbers: from the C library's generator, which the whole process shares,
 * or, once the calling thread has set a seed, from a generator of that thread alone.
 */
#ifndef CLUTTER_DSP_SEARCH_RANDOM_FILL_H
#define CLUTTER_DSP_SEARCH_RANDOM_FILL_H

#include <cstdint>
#include <optional>

namespace clutter::dsp {

inline constexpr double kRandomRange = 2147483647.0;

/* The calling thread's own generator begins with a seed; none: the C library's generator again. */
void seedThread(std::optional<std::uint32_t> seed);

/* A number from 0 to 2147483647. */
int drawNumber();

/* srand(rand() + time(0)); with a seed of the thread nothing, so that the draws go on. */
void reseed();

/* Reseeds, then fills n values uniformly. The product of a draw and max - min has the array's
 * precision, the rest is double. */
template <class T>
void fillUniform(T* out, int n, T min, T max) {
    reseed();
    for (int i = 0; out != nullptr && i < n; ++i) {
        const T product = static_cast<T>(drawNumber()) * (max - min);
        out[i] =
            static_cast<T>(static_cast<double>(product) / kRandomRange + static_cast<double>(min));
    }
}

/* A normally distributed number (one branch of the Box-Muller transform). */
double drawNormal(double mean, double deviation);

}  // namespace clutter::dsp

#endif

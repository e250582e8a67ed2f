/*
 * The generator and its normal distribution.
 */
#include "dsp/search/random_fill.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "base/constants.h"

namespace clutter::dsp {
namespace {

/* State of the thread's own generator, the SplitMix64 of Steele, Lea and Flood (2014). */
thread_local std::optional<std::uint64_t> threadState;

std::uint64_t splitMix(std::uint64_t& state) {
    std::uint64_t mixed = state += 0x9e3779b97f4a7c15;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
    return mixed ^ (mixed >> 31);
}

}  // namespace

void seedThread(std::optional<std::uint32_t> seed) {
    threadState = seed;
}

int drawNumber() {
    return threadState ? static_cast<int>(splitMix(*threadState) >> 33) : std::rand();
}

void reseed() {
    if (threadState) {
        return;
    }
    std::srand(static_cast<unsigned>(std::rand()) + static_cast<unsigned>(std::time(nullptr)));
}

double drawNormal(double mean, double deviation) {
    // The largest random number plus one may exceed the range: its logarithm must not be positive.
    const double share = std::min((drawNumber() + 1.0) / kRandomRange, 1.0);
    const double radius = std::sqrt(-2.0 * std::log(share));
    return radius * deviation * std::sin(drawNumber() * base::kTwoPi / kRandomRange) + mean;
}

}  // namespace clutter::dsp

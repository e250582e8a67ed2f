#include "dsp/uniform.h"

#include <cstdlib>
#include <ctime>

namespace clutter::dsp {
namespace {

constexpr double kRandomRange = 2147483647.0;

}  // namespace

void fillUniform(double* out, int n, double min, double max) {
    std::srand(static_cast<unsigned>(std::rand() + std::time(nullptr)));
    for (int i = 0; i < n; ++i) out[i] = std::rand() * (max - min) / kRandomRange + min;
}

}  // namespace clutter::dsp

/*
 * The toolkit's basics: sums, mean and standard deviation. Its other operations are in the rooms of
 * this folder, by subject.
 */
#include "clutterclassifier/CDSP.h"

#include <cmath>

namespace {

template <class T>
T sumInOrder(const T* x, int n) {
    T sum = 0;
    if (x == nullptr) {
        return sum;
    }
    for (int i = 0; i < n; ++i) {
        sum += x[i];
    }
    return sum;
}

}  // namespace

CDSP::CDSP() {}

CDSP::~CDSP() {}

int CDSP::GetMeanStd(float* x, int n, float& mean, float& std) {
    if (n < 1 || x == nullptr) {
        return -1;
    }
    float sum = 0.0f;
    for (int i = 0; i < n; ++i) {
        sum += x[i];
    }
    const float average = sum / static_cast<float>(n);
    mean = average;
    float squares = 0.0f;
    for (int i = 0; i < n; ++i) {
        squares += (x[i] - average) * (x[i] - average);
    }
    std = std::sqrt(squares / static_cast<float>(n));
    return 1;
}

float CDSP::GetSum(float* x, int n) {
    return sumInOrder(x, n);
}

double CDSP::GetSum(double* x, int n) {
    return sumInOrder(x, n);
}

/*
 * consumer.cpp - a project that found the installed package: drives the context as C++ hosts do.
 */
#include <clutterclassifier/clutterclassifier.h>

#include <cstdio>
#include <vector>

int main() {
    const int nrays = 12, ngates = 40;
    std::vector<double> zhh(nrays * ngates, 35.0), ranges(ngates), azimuths(nrays);
    for (int g = 0; g < ngates; ++g) {
        ranges[g] = 250.0 * (g + 1);
    }
    double elevation = 0.01, params[3] = {20.0, 26.0, 1.0};

    Crres context;
    copydata(zhh.data(), ranges.data(), azimuths.data(), &elevation, &context.zhh, nrays, ngates,
             params);
    std::snprintf(context.mfdir, sizeof context.mfdir, "%s", MEMBERSHIP);
    context.PrecipitationClutterClassification(1);
    int rain = 0;
    for (int i = 0; i < nrays * ngates; ++i) {
        rain += context.ccl.data[i] == 0.0f ? 1 : 0;
    }
    std::printf("%d of %d gates are precipitation\n", rain, nrays * ngates);
    return rain == nrays * ngates ? 0 : 1;  // an even field is rain: its texture is 0
}

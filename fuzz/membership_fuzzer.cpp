/* Reads a membership file and evaluates an engine with it. */
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "clutterclassifier/Cfuzzy.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string path = clutter::fuzz::inputFile(data, size);
    Cfuzzy engine(1, 2, 1, 1);
    double *x = nullptr, *y = nullptr;
    int points = 0;
    const int result = engine.readmf(path.data(), &x, &y, points);
    if (result == 1 && points < 1) std::abort();
    delete[] x;
    delete[] y;

    float params[5] = {};
    engine.Fillmfs(0, 0, "input", "table", path.c_str(), params);
    engine.Fillmfs(0, 1, "input", "ones", "ones", params);
    short rules[] = {0, 1, 1, 2};
    engine.Fillrules(rules, 2);
    float values[] = {-INFINITY, -1.0f, 0.0f, 0.5f, 2.0f, 1e30f, NAN, INFINITY};
    engine.AddressDataPointers(0, values);
    float classes[std::size(values)];
    const int evaluated = engine.Evaluate(classes, static_cast<int>(std::size(values)));
    if (evaluated != (result == 1 ? 1 : 0)) std::abort();
    return 0;
}

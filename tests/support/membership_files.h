/*
 * membership_files.h - writes membership functions for tests.
 */
#ifndef TESTS_SUPPORT_MEMBERSHIP_FILES_H
#define TESTS_SUPPORT_MEMBERSHIP_FILES_H

#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "support/literal/classification.h"

namespace clutter::test {

inline void writeText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline void writeFunction(const std::string& path, const literal::Function& function) {
    std::ofstream file(path);
    file.precision(17);
    for (std::size_t i = 0; i < function.px.size(); ++i) {
        file << function.px[i] << ' ' << function.py[i] << '\n';
    }
}

/* A table over about 0 to width with zeros, jumps, tiny and (sometimes) unordered points. */
inline literal::Function roughTable(std::mt19937& random, double width, bool ordered) {
    std::uniform_real_distribution<double> uniform;
    literal::Function table;
    const int points = 1 + static_cast<int>(random() % 30);
    double x = -0.1 * width * uniform(random);
    for (int i = 0; i < points; ++i) {
        table.px.push_back(x);
        const double degrees[] = {0.0, 1.0, 1e-30, 1e-9, uniform(random), uniform(random), 0.5};
        table.py.push_back(degrees[random() % 7]);
        const double step = random() % 8 == 0 ? 0.0 : width / points * 2.0 * uniform(random);
        x += ordered || random() % 6 != 0 ? step : -step;
    }
    return table;
}

}  // namespace clutter::test

#endif

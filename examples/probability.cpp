/*
 * probability.cpp - the same in C++: one line per step, errors as exceptions.
 */
#include <cstdint>
#include <iostream>
#include <vector>

#include "clutterclassifier/classifier.hpp"

int main(int argc, char** argv) try {
    const clutter::Classifier classifier(argc > 1 ? argv[1] : "", CLUTTER_ZHH_TEXTURE);
    std::vector<float> zhh(36 * 200, 35.0f), probability(zhh.size());
    std::vector<std::uint8_t> classes(zhh.size());
    for (std::size_t i = 0; i < zhh.size() / 3; ++i) {
        zhh[i] += static_cast<float>(i * i % 31);
    }
    clutter::Scan scan(36, 200);
    scan.zhh(zhh).noise(250.0, 40.0, 26.0);
    classifier.classify(scan, classes, probability);
    std::cout << "clutter: " << probability[1000] << ", rain: " << probability[6000] << "\n";
} catch (const clutter::Error& error) {
    std::cerr << error.what() << "\n";
    return 1;
}

/*
 * handle_scan.h - test scans for the handle: a small vocabulary of scans, options and results.
 */
#ifndef TESTS_CLASSIFIER_HANDLE_SCAN_H
#define TESTS_CLASSIFIER_HANDLE_SCAN_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/classifier.hpp"
#include "support/directories.h"
#include "support/test_scan.h"

namespace clutter::test {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/* A scan of doubles as the handle takes it. */
inline clutter_scan handleScan(const TestScan& scan) {
    clutter_scan given = {};
    given.size = sizeof given;
    given.rays = scan.nrays;
    given.gates = scan.ngates;
    clutter_field* const fields[] = {&given.zhh,      &given.zdr, &given.phidp,     &given.rhohv,
                                     &given.velocity, &given.ldr, &given.likelihood};
    for (std::size_t i = 0; i < std::size(fields); ++i) {
        if (scan.fields[i].empty()) {
            continue;
        }
        *fields[i] = {scan.fields[i].data(), 0, CLUTTER_DOUBLE};
    }
    given.gate_spacing_m = std::trunc(scan.ranges[1] - scan.ranges[0]);
    given.radar_constant_db = scan.params[0];
    given.min_snr_db = scan.params[1];
    return given;
}

inline clutter_options handleOptions() {
    clutter_options options = {};
    options.size = sizeof options;
    return options;
}

/* Values at one gate in forty become NaN. */
inline void addGaps(TestScan& scan, unsigned seed) {
    std::mt19937 random(seed);
    for (auto& field : scan.fields) {
        for (double& value : field) {
            if (random() % 40 == 0) {
                value = kNan;
            }
        }
    }
}

/* Everything that a classification can give. */
struct Answer {
    explicit Answer(const clutter_scan& scan)
        : Answer(static_cast<std::size_t>(scan.rays * scan.gates)) {}
    explicit Answer(std::size_t n) : classes(n, 99), margin(n), probability(n), deciding(n) {
        for (auto& contribution : contributions) {
            contribution.resize(n);
        }
    }

    clutter_result request() {
        clutter_result result = {};
        result.size = sizeof result;
        result.classes = classes.data();
        result.margin = margin.data();
        result.probability = probability.data();
        result.deciding = deciding.data();
        for (int i = 0; i < CLUTTER_INPUT_COUNT; ++i) {
            result.contributions[i] = contributions[i].data();
        }
        return result;
    }

    std::vector<std::uint8_t> classes;
    std::vector<float> margin, probability;
    std::vector<std::uint8_t> deciding;
    std::vector<float> contributions[CLUTTER_INPUT_COUNT];
};

inline Answer classifyAll(const Classifier& classifier, const clutter_scan& scan,
                          const clutter_options& options = handleOptions()) {
    Answer answer(scan);
    classifier.classify(scan, options, answer.request());
    return answer;
}

inline std::vector<std::uint8_t> classesOnly(const Classifier& classifier, const clutter_scan& scan,
                                             const clutter_options& options = handleOptions()) {
    std::vector<std::uint8_t> classes(static_cast<std::size_t>(scan.rays * scan.gates), 99);
    clutter_result result = {};
    result.size = sizeof result;
    result.classes = classes.data();
    classifier.classify(scan, options, result);
    return classes;
}

}  // namespace clutter::test

#endif

/*
 * Reads points, as pairs of numbers of a text and as lines of the program's list: what is written
 * from them is read as the same points.
 */
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"
#include "scan/points/samples.h"

namespace {

using namespace clutter::fuzz;

struct Pairs {
    float* ranges = nullptr;
    float* angles = nullptr;
    int n = 0;

    explicit Pairs(std::string path) {
        Crres().ReadRangeAngleLocations(path.data(), &ranges, &angles, n);
    }
    ~Pairs() {
        delete[] ranges;
        delete[] angles;
    }
    Pairs(const Pairs&) = delete;
    Pairs& operator=(const Pairs&) = delete;

    bool areNumbers() const {
        for (int i = 0; i < n; ++i) {
            if (!std::isfinite(ranges[i]) || !std::isfinite(angles[i])) {
                return false;
            }
        }
        return true;
    }
};

std::string writePairs(const Pairs& pairs) {
    const std::string path = scratch().file("written");
    std::FILE* file = std::fopen(path.c_str(), "w");
    for (int i = 0; i < pairs.n; ++i) {
        std::fprintf(file, "%.9g %.9g\n", static_cast<double>(pairs.ranges[i]),
                     static_cast<double>(pairs.angles[i]));
    }
    std::fclose(file);
    return path;
}

void requireSamePairs(const Pairs& pairs, const std::string& written) {
    const Pairs back(written);
    require(back.n == pairs.n, "no point is lost");
    require(sameBits(pairs.ranges, back.ranges, pairs.n) &&
                sameBits(pairs.angles, back.angles, pairs.n),
            "points come back as they were written");
    const scan::Points points = scan::readPoints(written);
    require(points.size() == static_cast<std::size_t>(pairs.n), "one point a line");
    require(sameBits(points.first.data(), pairs.ranges, pairs.n) &&
                sameBits(points.second.data(), pairs.angles, pairs.n),
            "both readers take the same numbers");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string in = inputFile(data, size);
    const Pairs pairs(in);
    if (pairs.n > 0 && pairs.areNumbers()) {
        requireSamePairs(pairs, writePairs(pairs));
    }
    try {
        const scan::Points points = scan::readPoints(in);
        require(points.size() > 0 && points.first.size() == points.second.size(), "whole points");
    } catch (const std::runtime_error&) {
    }
    return 0;
}

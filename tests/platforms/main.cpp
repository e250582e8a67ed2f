/*
 * platform_results make MEMBERSHIP FOLDER: keeps the results of this platform in FOLDER.
 * platform_results compare MEMBERSHIP FOLDER: computes them again and says where they differ.
 * Results that rest on the C library's functions may do so by a few units in the last place; every
 * other must be the same bits. The last line is a row of the table in docs/platforms.md.
 */
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "results.h"

namespace platforms {
namespace {

/* Largest relative difference of results that go through several functions of the C library. */
constexpr double kLargestDifference = 1e-4;

std::string fileOf(const std::string& folder, std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == ' ' || c == ','; }, '_');
    return folder + "/" + name + ".values";
}

std::uint32_t bitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/* Low byte first, on every machine. */
void keep(const std::string& path, const std::vector<float>& values) {
    std::ofstream file(path, std::ios::binary);
    for (const float value : values) {
        for (int shift = 0; shift < 32; shift += 8) {
            file.put(static_cast<char>(bitsOf(value) >> shift & 255));
        }
    }
}

std::vector<float> kept(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<float> values(bytes.size() / 4);
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::uint32_t bits = 0;
        for (std::size_t k = 4; k-- > 0;) {
            bits = bits << 8 | static_cast<unsigned char>(bytes[4 * i + k]);
        }
        std::memcpy(&values[i], &bits, sizeof bits);
    }
    return values;
}

bool same(float a, float b) {
    return bitsOf(a) == bitsOf(b) || (std::isnan(a) && std::isnan(b));
}

/* Whether result may pass for expected; says how far it is from it. */
bool acceptable(const std::string& name, const Result& result, const std::vector<float>& expected) {
    if (result.values.size() != expected.size()) {
        std::printf("%s: %zu values instead of %zu\n", name.c_str(), result.values.size(),
                    expected.size());
        return false;
    }
    std::size_t differing = 0;
    double most = 0.0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!same(result.values[i], expected[i])) {
            const double a = result.values[i], b = expected[i];
            const double difference = std::abs(a - b) / std::max(1.0, std::abs(b));
            most = std::isnan(difference) ? INFINITY : std::max(most, difference);
            ++differing;
        }
    }
    if (differing == 0) {
        return true;
    }
    std::printf("%s: %zu of %zu values differ, by %.1e at most\n", name.c_str(), differing,
                expected.size(), most);
    return result.rounded && most <= kLargestDifference;
}

int run(const std::string& verb, const std::string& membership, const std::string& folder) {
    const std::string input = folder + "/input.uf";
    if (verb == "make") {
        std::filesystem::create_directories(folder);
        makeInput(input);
        for (const auto& [name, result] : resultsOf(input, membership, folder)) {
            keep(fileOf(folder, name), result.values);
        }
        return 0;
    }
    if (verb != "compare") {
        throw std::runtime_error("make or compare");
    }
    const std::string own = folder + "/own";
    std::filesystem::create_directories(own);
    int wrong = 0;
    std::size_t values = 0;
    const Results results = resultsOf(input, membership, own);
    for (const auto& [name, result] : results) {
        values += result.values.size();
        wrong += acceptable(name, result, kept(fileOf(folder, name))) ? 0 : 1;
    }
    std::printf("%zu results, %zu values: %d wrong\n", results.size(), values, wrong);
    return wrong == 0 ? 0 : 1;
}

}  // namespace
}  // namespace platforms

int main(int argc, char** argv) try {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s make|compare MEMBERSHIP FOLDER\n", argv[0]);
        return 2;
    }
    return platforms::run(argv[1], argv[2], argv[3]);
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}

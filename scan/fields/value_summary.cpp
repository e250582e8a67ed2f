/* value_summary.cpp - counts and ends in one pass, the median by its digits. */
#include "scan/fields/value_summary.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "scan/scan.h"

namespace scan {
namespace {

constexpr std::size_t kLanes = 16;

/* Each lane sees every sixteenth value; no loop over lanes has a branch. */
struct Lanes {
    float lowest[kLanes], highest[kLanes];
    std::int32_t count[kLanes] = {}, inside[kLanes] = {};

    Lanes() {
        std::fill(lowest, lowest + kLanes, std::numeric_limits<float>::infinity());
        std::fill(highest, highest + kLanes, -std::numeric_limits<float>::infinity());
    }

    void add(const float* values, float low, float high) {
        constexpr float kMax = std::numeric_limits<float>::max();
        for (std::size_t i = 0; i < kLanes; ++i) {
            const float value = values[i];
            const bool finite = std::abs(value) <= kMax;
            const float orHigh = finite ? value : std::numeric_limits<float>::infinity();
            const float orLow = finite ? value : -std::numeric_limits<float>::infinity();
            lowest[i] = orHigh < lowest[i] ? orHigh : lowest[i];
            highest[i] = orLow > highest[i] ? orLow : highest[i];
            count[i] += finite ? 1 : 0;
            inside[i] += (finite & (value >= low) & (value <= high)) ? 1 : 0;
        }
    }
};

Lanes gather(const std::vector<float>& values, float low, float high) {
    Lanes lanes;
    const std::size_t whole = values.size() - values.size() % kLanes;
    for (std::size_t i = 0; i < whole; i += kLanes) {
        lanes.add(values.data() + i, low, high);
    }
    float rest[kLanes];
    std::fill(rest, rest + kLanes, kNoValue);
    std::copy(values.begin() + static_cast<std::ptrdiff_t>(whole), values.end(), rest);
    lanes.add(rest, low, high);
    return lanes;
}

/* Integers in the order of the finite floats; both zeros are one. */
std::uint32_t keyOf(float value) {
    std::uint32_t bits = 0;
    const float zeroless = value + 0.0F;  // -0 becomes +0
    std::memcpy(&bits, &zeroless, sizeof bits);
    return (bits >> 31U) != 0 ? ~bits : bits | 0x80000000U;
}

float valueOf(std::uint32_t key) {
    const std::uint32_t bits = (key >> 31U) != 0 ? key & 0x7fffffffU : ~key;
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/* The digit that the value of a rank has, given how many values have each. rank becomes that among
 * the values of this digit. */
std::uint32_t digitAt(const std::vector<std::uint32_t>& counts, std::uint32_t& rank) {
    std::uint32_t digit = 0;
    while (rank >= counts[digit]) {
        rank -= counts[digit++];
    }
    return digit;
}

}  // namespace

ValueSummary summarise(const std::vector<float>& values, Role role) {
    const RoleInfo& info = roleInfo(role);
    const Lanes lanes =
        gather(values, static_cast<float>(info.lowest), static_cast<float>(info.highest));
    ValueSummary summary;
    long inside = 0;
    for (std::size_t i = 0; i < kLanes; ++i) {
        summary.count += lanes.count[i];
        inside += lanes.inside[i];
    }
    if (summary.count == 0) {
        return summary;
    }
    summary.lowest = *std::min_element(lanes.lowest, lanes.lowest + kLanes);
    summary.highest = *std::max_element(lanes.highest, lanes.highest + kLanes);
    summary.shareInRange = static_cast<double>(inside) / static_cast<double>(summary.count);
    return summary;
}

float medianOf(const std::vector<float>& values) {
    constexpr unsigned kDigitBits = 16;
    constexpr std::uint32_t kDigit = (1U << kDigitBits) - 1;
    std::vector<std::uint32_t> keys;
    keys.reserve(values.size());
    std::vector<std::uint32_t> counts(kDigit + 1);
    for (const float value : values) {
        if (std::isfinite(value)) {
            keys.push_back(keyOf(value));
            ++counts[keys.back() >> kDigitBits];
        }
    }
    if (keys.empty()) {
        return 0;
    }
    auto rank = static_cast<std::uint32_t>(keys.size() / 2);
    const std::uint32_t high = digitAt(counts, rank);
    std::fill(counts.begin(), counts.end(), 0);
    for (const std::uint32_t key : keys) {
        counts[key & kDigit] += (key >> kDigitBits) == high ? 1 : 0;
    }
    return valueOf(high << kDigitBits | digitAt(counts, rank));
}

}  // namespace scan

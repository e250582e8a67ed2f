/*
 * Sorting by keys, then the order of equal values by undoing the turns of their queue.
 */
#include "dsp/search/sorting.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/bit_cast.h"

namespace clutter::dsp {
namespace {

using Positions = std::vector<std::uint32_t>;

/* Counts in n cells. Sums over the first cells, and the cell of a sum, take log n steps each. */
class CountTree {
  public:
    explicit CountTree(std::size_t n) : nodes_(n + 1, 0) {}

    void add(std::size_t cell, std::uint32_t count) {
        for (std::size_t i = cell + 1; i < nodes_.size(); i += i & (~i + 1)) {
            nodes_[i] += count;
        }
    }

    /* Counts before a cell. */
    std::uint32_t before(std::size_t cell) const {
        std::uint32_t sum = 0;
        for (std::size_t i = cell; i > 0; i &= i - 1) {
            sum += nodes_[i];
        }
        return sum;
    }

    /* The cell of the count that has rank counts before it. */
    std::size_t find(std::uint32_t rank) const {
        std::size_t at = 0;
        for (std::size_t step = std::bit_floor(nodes_.size() - 1); step > 0; step /= 2) {
            if (at + step < nodes_.size() && nodes_[at + step] <= rank) {
                at += step;
                rank -= nodes_[at];
            }
        }
        return at;
    }

  private:
    std::vector<std::uint32_t> nodes_;  // node i: sum of as many cells, up to i, as i's lowest bit
};

/* Ordered like the value; equal for 0.0 and -0.0. Not for NaN. */
std::uint32_t orderedBits(float value) {
    const auto bits = base::bitCast<std::uint32_t>(value == 0.0f ? 0.0f : value);
    constexpr std::uint32_t kSign = 0x80000000u;
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

/* The value is in the upper half, the rank in the lower: sorts by value, then by rank. */
std::uint64_t sortKey(float value, std::size_t rank) {
    return static_cast<std::uint64_t>(orderedBits(value)) << 32 | rank;
}

std::uint32_t rankOf(std::uint64_t key) {
    return static_cast<std::uint32_t>(key);
}

bool sameValue(std::uint64_t a, std::uint64_t b) {
    return a >> 32 == b >> 32;
}

/*
 * The order in which a group of equal values, given by ascending rank, leaves the selection.
 * turns[j] is how often the queue turns after value j has joined it. The turns are undone from the
 * end: while j values remain, the first of the queue is at the head-th free index, and the last to
 * join is just before it.
 */
Positions turnQueue(const Positions& group, const Positions& turns) {
    Positions ordered(group.size());
    CountTree free(group.size());
    for (std::size_t j = 0; j < group.size(); ++j) {
        free.add(j, 1);
    }
    std::size_t head = 0;
    for (std::size_t j = group.size(); j > 0; --j) {
        head = (head + j - turns[j - 1] % j) % j;
        const std::size_t last = (head + j - 1) % j;
        const std::size_t index = free.find(static_cast<std::uint32_t>(last));
        ordered[index] = group[j - 1];
        free.add(index, ~0u);  // minus one, modulo 2^32
        if (head > 0) {
            --head;
        }
    }
    return ordered;
}

/* The number of smaller values between each value of a group and the next one, or the end. */
Positions countTurns(const Positions& group, const CountTree& smaller, std::size_t n) {
    Positions turns;
    for (std::size_t j = 0; j < group.size(); ++j) {
        const std::size_t next = j + 1 < group.size() ? group[j + 1] : n;
        turns.push_back(smaller.before(next) - smaller.before(group[j]));
    }
    return turns;
}

void reorderTies(std::vector<std::uint64_t>& keys) {
    const auto equalNeighbours = std::adjacent_find(keys.begin(), keys.end(), sameValue);
    if (equalNeighbours == keys.end()) {
        return;
    }
    CountTree smaller(keys.size());
    for (auto first = keys.begin(); first != keys.end();) {
        const auto end = std::find_if(
            first, keys.end(), [first](std::uint64_t key) { return !sameValue(key, *first); });
        Positions group;
        for (auto key = first; key != end; ++key) {
            group.push_back(rankOf(*key));
        }
        if (group.size() > 1) {
            const Positions ordered = turnQueue(group, countTurns(group, smaller, keys.size()));
            std::copy(ordered.begin(), ordered.end(), first);  // only ranks are read from now on
        }
        for (const std::uint32_t rank : group) {
            smaller.add(rank, 1);
        }
        first = end;
    }
}

}  // namespace

void sortByExchange(const float* in, float* out, int* index, int n) {
    if (n < 1) {
        return;
    }
    const std::vector<float> values(in, in + n);
    std::vector<int> indices;  // of elements other than NaN
    std::vector<std::uint64_t> keys;
    for (int i = 0; i < n; ++i) {
        index[i] = i;
        const float value = values[static_cast<std::size_t>(i)];
        if (value != value) {
            continue;
        }
        keys.push_back(sortKey(value, indices.size()));
        indices.push_back(i);
    }
    std::sort(keys.begin(), keys.end());
    reorderTies(keys);
    for (std::size_t k = 0; k < keys.size(); ++k) {
        index[indices[k]] = indices[rankOf(keys[k])];
    }
    for (int i = 0; i < n; ++i) {
        out[i] = values[static_cast<std::size_t>(index[i])];
    }
}

}  // namespace clutter::dsp

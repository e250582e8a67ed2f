/*
 * bits.h - comparison of results bit by bit; one NaN is as good as another.
 */
#ifndef TESTS_SUPPORT_BITS_H
#define TESTS_SUPPORT_BITS_H

#include <cstring>
#include <vector>

namespace clutter::test {

template <class T>
bool sameBits(T a, T b) {
    return (a != a && b != b) || std::memcmp(&a, &b, sizeof(T)) == 0;
}

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!sameBits(a[i], b[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace clutter::test

#endif

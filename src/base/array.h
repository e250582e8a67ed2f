/*
 * array.h - ownership of the raw arrays that public classes hold (new[] and delete[]).
 */
#ifndef CLUTTER_BASE_ARRAY_H
#define CLUTTER_BASE_ARRAY_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace clutter::base {

/* Frees what an owned pointer holds and makes it null. */
template <class T>
void release(T*& owned) {
    delete[] owned;
    owned = nullptr;
}

/* Replaces what an owned pointer holds by a new array, built beforehand. */
template <class T>
void adopt(T*& owned, std::unique_ptr<T[]> fresh) {
    delete[] owned;
    owned = fresh.release();
}

/* A new array with a vector's values. */
template <class T>
std::unique_ptr<T[]> duplicate(const std::vector<T>& values) {
    std::unique_ptr<T[]> fresh(new T[values.size()]);
    std::copy(values.begin(), values.end(), fresh.get());
    return fresh;
}

/* Number of elements of a two-dimensional block; counts below 1 make it empty. */
inline std::size_t cellCount(int columns, int rows) {
    if (columns < 1 || rows < 1) {
        return 0;
    }
    return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
}

}  // namespace clutter::base

#endif

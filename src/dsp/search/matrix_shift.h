/*
 * matrix_shift.h - shifted matrices, and the shift between two matrices that matches best.
 */
#ifndef CLUTTER_DSP_SEARCH_MATRIX_SHIFT_H
#define CLUTTER_DSP_SEARCH_MATRIX_SHIFT_H

#include <vector>

#include "dsp/windows/filters.h"

namespace clutter::dsp {

/* Positive towards higher rows and columns. */
struct Shift {
    int rows;
    int columns;
};

/* out has the same shape and may be in; vacated cells become 0. False, with out unchanged, when the
 * shift exceeds the number of rows or columns. */
[[nodiscard]] bool shiftMatrix(const float* in, float* out, MatrixShape shape, Shift shift);

/* Scores of all shifts in a square search window. Cells that no shift reaches are 0. */
struct ShiftSearch {
    int window;
    int step;

    int half() const { return window / 2; }
    std::vector<float> score(const float* current, const float* previous, MatrixShape shape) const;
};

}  // namespace clutter::dsp

#endif

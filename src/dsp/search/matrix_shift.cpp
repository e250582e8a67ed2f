/*
 * Rows are moved in an order that lets the result overwrite the input.
 */
#include "dsp/search/matrix_shift.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "dsp/search/scores.h"

namespace clutter::dsp {
namespace {

void shiftRow(const float* in, float* out, std::int64_t n, std::int64_t shift) {
    const std::int64_t lost = std::min(n, shift < 0 ? -shift : shift);
    const std::int64_t kept = n - lost;
    const std::int64_t to = shift > 0 ? lost : 0;
    const std::int64_t from = shift > 0 ? 0 : lost;
    std::memmove(out + to, in + from, static_cast<std::size_t>(kept) * sizeof(float));
    std::fill_n(shift > 0 ? out : out + kept, lost, 0.0f);
}

}  // namespace

bool shiftMatrix(const float* in, float* out, MatrixShape shape, Shift shift) {
    if (shift.rows > shape.rows || shift.columns > shape.columns) {
        return false;
    }
    const std::int64_t rowShift = shift.rows;
    for (int i = 0; i < shape.rows; ++i) {
        // In place, a row is overwritten only after it has been moved.
        const std::int64_t row = rowShift > 0 ? shape.rows - 1 - i : i;
        const std::int64_t from = row - rowShift;
        float* target = out + shape.offset(row);
        if (from < 0 || from >= shape.rows) {
            std::fill_n(target, shape.columns, 0.0f);
        } else {
            shiftRow(in + shape.offset(from), target, shape.columns, shift.columns);
        }
    }
    return true;
}

std::vector<float> ShiftSearch::score(const float* current, const float* previous,
                                      MatrixShape shape) const {
    const std::int64_t side = window;
    const std::int64_t cells = side * side;
    std::vector<float> scores(static_cast<std::size_t>(cells), 0.0f);
    std::vector<float> shifted(static_cast<std::size_t>(shape.cells()), 0.0f);
    for (std::int64_t r = 0; r <= 2LL * half(); r += step) {
        for (std::int64_t c = 0; c <= 2LL * half(); c += step) {
            // An even window reaches one row and column past the grid's side: the flat index
            // counts while it is within the grid.
            const std::int64_t cell = r * side + c;
            if (cell >= cells) {
                break;
            }
            // A refused shift keeps the matrix of the previous one.
            (void)shiftMatrix(previous, shifted.data(), shape,
                              {static_cast<int>(r) - half(), static_cast<int>(c) - half()});
            scores[static_cast<std::size_t>(cell)] =
                sumOfProducts(current, shifted.data(), shape.cells());
        }
    }
    return scores;
}

}  // namespace clutter::dsp

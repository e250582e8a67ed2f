/*
 * cell_grid.h - a range cut into equal cells, for tables that are looked up.
 */
#ifndef CLUTTER_FUZZY_CELL_GRID_H
#define CLUTTER_FUZZY_CELL_GRID_H

#include <vector>

namespace clutter::fuzzy {

class CellGrid {
  public:
    /* Puts the cells where the sorted corners of a function crowd; the first and the last cell hold
     * all that is beyond. False when the range cannot be cut. */
    [[nodiscard]] bool fit(const std::vector<float>& corners, int cells);

    /* The cell of each of n values; NaN has the number of cells. */
    void find(const float* x, int* found, int n) const;

    /* Bounds of the values that find() may give a cell. */
    float lowEnd(int cell) const;
    float highEnd(int cell) const;

  private:
    float edge(double cells) const;

    float origin_ = 0.0f;
    float cellsPerUnit_ = 0.0f;
    int cells_ = 0;
};

}  // namespace clutter::fuzzy

#endif

/*
 * text_matrix.h - numbers in text, separated by white space, as a table. The first line determines
 * the number of columns.
 */
#ifndef CLUTTER_DSP_FILES_TEXT_MATRIX_H
#define CLUTTER_DSP_FILES_TEXT_MATRIX_H

#include <cstddef>
#include <memory>
#include <string_view>

namespace clutter::dsp {

struct TableShape {
    std::size_t rows = 0;
    std::size_t columns = 0;

    std::size_t cells() const { return rows * columns; }
    /* Whether a host can receive both counts as ints. */
    bool fitsInts() const;
};

/* Lines end with a line feed, a carriage return or both. An empty first line means one column. A
 * last row that is not full is dropped. A text without tokens has no cells. */
TableShape measureMatrix(std::string_view text);

/* Cell (row, column) at row + shape.rows * column. A token "nan" gives nanValue, rounded to six
 * decimals; any other token that is not a number gives 0. */
std::unique_ptr<float[]> unpackMatrix(std::string_view text, const TableShape& shape,
                                      float nanValue);

/* Views the bytes of a file as text. */
template <class Bytes>
std::string_view textOf(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace clutter::dsp

#endif

/*
 * text_matrix.h - white-space separated numbers as a matrix: its first line tells the columns.
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
    /* Whether both counts can be told to a host as ints. */
    bool fitsInts() const;
};

/* Lines end with a line feed, a carriage return or both. An empty first line makes one column; what
 * does not fill a row at the end is no row; a text without tokens has no cells. */
TableShape measureMatrix(std::string_view text);

/* Cell (row, column) at row + shape.rows * column. A token "nan" stands for nanValue, taken with
 * six decimals; any other that is no number is 0. */
std::unique_ptr<float[]> unpackMatrix(std::string_view text, const TableShape& shape,
                                      float nanValue);

/* The bytes of a file as text. */
template <class Bytes>
std::string_view textOf(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace clutter::dsp

#endif

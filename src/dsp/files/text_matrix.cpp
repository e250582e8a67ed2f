/*
 * Two passes over a text: count its tokens, then convert them.
 */
#include "dsp/files/text_matrix.h"

#include <limits>

#include "base/number.h"
#include "base/text.h"
#include "base/text_writer.h"

using clutter::base::parseNumber;
using clutter::base::TokenReader;

namespace clutter::dsp {

namespace {

constexpr int kDecimalsOfNan = 6;

std::size_t countTokens(std::string_view text) {
    std::size_t count = 0;
    for (TokenReader tokens(text); tokens.next();) {
        ++count;
    }
    return count;
}

}  // namespace

bool TableShape::fitsInts() const {
    constexpr std::size_t kMax = std::numeric_limits<int>::max();
    return rows <= kMax && columns <= kMax;
}

TableShape measureMatrix(std::string_view text) {
    const std::size_t total = countTokens(text);
    if (total == 0) {
        return {};
    }
    const std::size_t inFirstLine = countTokens(text.substr(0, text.find_first_of("\r\n")));
    const std::size_t columns = inFirstLine == 0 ? 1 : inFirstLine;
    return {total / columns, columns};
}

std::unique_ptr<float[]> unpackMatrix(std::string_view text, const TableShape& shape,
                                      float nanValue) {
    std::unique_ptr<float[]> cells(new float[shape.cells()]);
    const auto standIn = base::roundToFloat(
        parseNumber(base::fixedText(static_cast<double>(nanValue), kDecimalsOfNan)));
    TokenReader tokens(text);
    for (std::size_t row = 0; row < shape.rows; ++row) {
        for (std::size_t column = 0; column < shape.columns; ++column) {
            const std::string_view token = tokens.next().value_or("");
            cells[row + shape.rows * column] =
                token == "nan" ? standIn : base::roundToFloat(parseNumber(token));
        }
    }
    return cells;
}

}  // namespace clutter::dsp

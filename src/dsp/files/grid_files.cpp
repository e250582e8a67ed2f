/*
 * ASCII grids with a six-line header, for geographic software (docs/formats/grid-file.md). The
 * file's first line is the northernmost row, a grid's row 0 the southernmost.
 */
#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>

#include "base/array.h"
#include "base/files/claims.h"
#include "base/files/file.h"
#include "base/number.h"
#include "base/text.h"
#include "base/text_writer.h"
#include "clutterclassifier/CDSP.h"
#include "dsp/files/text_matrix.h"

using clutter::base::File;
using clutter::base::TextWriter;
using clutter::base::TokenReader;

namespace {

constexpr std::size_t kNoDataBytes = 1024;
constexpr int kDecimals = 2;

struct GridHeader {
    long long ncols = 0;
    long long nrows = 0;
    double xll = 0.0;
    double yll = 0.0;
    double cellsize = 0.0;
    std::string_view nodata;
};

/* The value after a key; no result when another key, or the end, comes first. */
std::optional<std::string_view> valueOf(std::string_view key, TokenReader& tokens) {
    if (tokens.next() != key) {
        return std::nullopt;
    }
    return tokens.next();
}

std::optional<std::string_view> noDataText(TokenReader& tokens) {
    const auto key = tokens.next();
    if (key != "nodata_value" && key != "NODATA_value") {
        return std::nullopt;
    }
    return tokens.next();
}

std::optional<GridHeader> parseHeader(TokenReader& tokens) {
    const auto ncols = valueOf("ncols", tokens);
    const auto nrows = ncols ? valueOf("nrows", tokens) : std::nullopt;
    const auto xll = nrows ? valueOf("xllcorner", tokens) : std::nullopt;
    const auto yll = xll ? valueOf("yllcorner", tokens) : std::nullopt;
    const auto cellsize = yll ? valueOf("cellsize", tokens) : std::nullopt;
    const auto nodata = cellsize ? noDataText(tokens) : std::nullopt;
    if (!nodata) {
        return std::nullopt;
    }
    using clutter::base::parseInteger;
    using clutter::base::parseNumber;
    return GridHeader{parseInteger(*ncols), parseInteger(*nrows),   parseNumber(*xll),
                      parseNumber(*yll),    parseNumber(*cellsize), *nodata};
}

bool isPossible(const GridHeader& header, std::size_t fileBytes) {
    constexpr long long kMax = std::numeric_limits<int>::max();
    if (header.ncols < 0 || header.nrows < 0) {
        return false;
    }
    if (header.ncols > kMax || header.nrows > kMax) {
        return false;
    }
    const auto cells =
        static_cast<std::size_t>(header.ncols) * static_cast<std::size_t>(header.nrows);
    return clutter::base::mayDeclare(cells, fileBytes);
}

/* Column-major from the south: cell (row, column) at row + nrows * column. Missing cells are 0. */
std::unique_ptr<float[]> unpackGrid(TokenReader& tokens, std::size_t nrows, std::size_t ncols) {
    std::unique_ptr<float[]> cells(new float[nrows * ncols]());
    for (std::size_t line = 0; line < nrows; ++line) {
        for (std::size_t column = 0; column < ncols; ++column) {
            const auto token = tokens.next();
            if (!token) {
                return cells;
            }
            cells[nrows - line - 1 + nrows * column] =
                clutter::base::roundToFloat(clutter::base::parseNumber(*token));
        }
    }
    return cells;
}

/* The part of a grid that is written. */
struct GridCut {
    int r0, r1, c0, c1;

    bool empty() const { return r0 >= r1 || c0 >= c1; }
};

void writeCorner(const char* key, float value, TextWriter& out) {
    out.text(key).text("\t").fixed(static_cast<double>(value), kDecimals).text("\n");
}

}  // namespace

void CDSP::SaveDataToGISformat(char* path, float* data, int nrows, int ncols, int r0, int r1,
                               int c0, int c1, float xll, float yll, float cellsize, char* nodata,
                               int rowMajor) {
    const GridCut cut{std::max(r0, 0), std::min(r1, nrows), std::max(c0, 0), std::min(c1, ncols)};
    if (cut.empty() || data == nullptr) {
        return;
    }
    const File file = clutter::base::openFile(path, "wt");
    if (!file) {
        return;
    }
    TextWriter out(file.get());
    out.text("ncols\t\t").integer(cut.c1 - cut.c0).text("\n");
    out.text("nrows\t\t").integer(cut.r1 - cut.r0).text("\n");
    writeCorner("xllcorner", xll, out);
    writeCorner("yllcorner", yll, out);
    writeCorner("cellsize", cellsize, out);
    out.text("nodata_value\t").text(nodata == nullptr ? "" : nodata).text("\n");
    const std::ptrdiff_t rowStep = rowMajor != 0 ? ncols : 1;
    const std::ptrdiff_t columnStep = rowMajor != 0 ? 1 : nrows;
    for (int line = cut.r0; line < cut.r1; ++line) {
        const float* row = data + (nrows - line - 1) * rowStep;
        for (int column = cut.c0; column < cut.c1; ++column) {
            out.text(" ").fixed(static_cast<double>(row[column * columnStep]), kDecimals);
        }
        out.text("\n");
    }
}

int CDSP::ReadDataFromGISformat(char* path, float** data, int& nrows, int& ncols, float& xll,
                                float& yll, float& cellsize, char* nodata) {
    if (data == nullptr) {
        return 0;
    }
    const auto bytes = clutter::base::readTextFile(path);
    if (!bytes) {
        return 0;
    }
    TokenReader tokens(clutter::dsp::textOf(*bytes));
    const auto header = parseHeader(tokens);
    if (!header || !isPossible(*header, bytes->size())) {
        return 0;
    }
    clutter::base::adopt(*data, unpackGrid(tokens, static_cast<std::size_t>(header->nrows),
                                           static_cast<std::size_t>(header->ncols)));
    nrows = static_cast<int>(header->nrows);
    ncols = static_cast<int>(header->ncols);
    xll = static_cast<float>(header->xll);
    yll = static_cast<float>(header->yll);
    cellsize = static_cast<float>(header->cellsize);
    if (nodata != nullptr) {
        const std::string_view text = header->nodata.substr(0, kNoDataBytes - 1);
        *std::copy(text.begin(), text.end(), nodata) = '\0';
    }
    return 1;
}

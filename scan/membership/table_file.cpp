/* table_file.cpp - pairs of abscissa and degree, token by token. */
#include "scan/membership/table_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <locale>
#include <sstream>

#include "scan/formats/writing/output_file.h"
#include "scan/text.h"

namespace scan {
namespace {

constexpr const char* kSuffixes[kTableClasses] = {"clutter", "precipi", "seaclut", "turclut"};
constexpr std::size_t kMaxShown = 40;  // characters of a token in a message
constexpr long kMaxBytes = 10 * 1000 * 1000;

struct Token {
    std::string text;
    int line;
};

std::vector<Token> tokensOf(const std::string& bytes) {
    std::vector<Token> tokens;
    int line = 1;
    bool inside = false;
    for (const char c : bytes) {
        const bool space = std::strchr(" \t\n\v\f\r", c) != nullptr && c != '\0';
        if (!space && !inside) {
            tokens.push_back({"", line});
        }
        if (!space) {
            tokens.back().text += c;
        }
        inside = !space;
        line += c == '\n' ? 1 : 0;
    }
    return tokens;
}

std::string quoted(const std::string& token) {
    std::string text = "\"";
    text += printable(token.substr(0, kMaxShown));
    text += token.size() > kMaxShown ? "...\"" : "\"";
    return text;
}

/* The bytes of a regular file; a finding when it cannot be read. */
std::string readBytes(const std::string& path, TableFile& table, const std::string& file) {
    struct stat state = {};
    const auto fail = [&](const std::string& why) {
        table.findings.push_back({file, 0, true, why});
        return std::string();
    };
    if (stat(path.c_str(), &state) != 0) {
        return fail(std::strerror(errno));
    }
    if (!S_ISREG(state.st_mode)) {
        return fail("is not a regular file");
    }
    if (state.st_size > kMaxBytes) {
        return fail("is larger than 10 MB");
    }
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return stream.is_open() && !stream.bad() ? bytes : fail(std::strerror(errno));
}

}  // namespace

bool parseNumber(const std::string& text, double& value) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    stream >> value;
    return !stream.fail() && stream.peek() == std::istringstream::traits_type::eof() &&
           std::isfinite(value);
}

std::string tableFileName(const std::string& tag, TableClass tableClass) {
    return "cal_mf_" + tag + "_" + kSuffixes[static_cast<int>(tableClass)] + ".dat";
}

TableFile readTableFile(const std::string& directory, const std::string& file) {
    TableFile table;
    const std::string bytes = readBytes(directory + "/" + file, table, file);
    if (!table.findings.empty()) {
        return table;
    }
    const std::vector<Token> tokens = tokensOf(bytes);
    std::vector<double> numbers;
    for (const Token& token : tokens) {
        double value = 0;
        if (!parseNumber(token.text, value)) {
            table.findings.push_back(
                {file, token.line, true, quoted(token.text) + " is not a finite number"});
            break;
        }
        numbers.push_back(value);
    }
    for (std::size_t i = 1; i < numbers.size(); i += 2) {
        table.points.push_back({numbers[i - 1], numbers[i], tokens[i].line});
    }
    if (table.findings.empty() && tokens.size() % 2 == 1) {
        table.findings.push_back({file, tokens.back().line, true, "an abscissa without a degree"});
    } else if (table.findings.empty() && tokens.empty()) {
        table.findings.push_back({file, 0, true, "holds no points"});
    }
    return table;
}

void writeTableFile(const std::string& path, const std::vector<TablePoint>& points) {
    std::string text;
    for (const TablePoint& point : points) {
        char line[64];
        std::snprintf(line, sizeof line, "%.7g %.4f\n", point.x, point.degree);
        text += line;
    }
    OutputFile output(path);
    requireWritten(output, [&] {
        std::ofstream stream(output.temporary(), std::ios::binary);
        stream << text;
        stream.close();
        return !stream.fail();
    });
    output.commit();
}

double degreeAt(const std::vector<TablePoint>& points, double x) {
    const auto above =
        std::upper_bound(points.begin(), points.end(), x,
                         [](double value, const TablePoint& p) { return value < p.x; });
    if (above == points.begin()) {
        return points.front().degree;
    }
    if (above == points.end() || std::isnan(x)) {
        return points.back().degree;
    }
    const TablePoint& left = *std::prev(above);
    return above->degree + (x - above->x) * (above->degree - left.degree) / (above->x - left.x);
}

}  // namespace scan

/* point_list.cpp - bounded reading, line by line. */
#include "scan/points/point_list.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "scan/opened_file.h"
#include "scan/scan.h"

namespace scan {
namespace {

/* A device may have no end. */
constexpr std::size_t kMaxLineLength = 1000;
constexpr int kMaxLines = 10'000'000;

/* As std::getline(), with an end to the longest line. */
bool readLine(std::istream& file, int number, std::string& line) {
    line.clear();
    for (char c = 0; file.get(c);) {
        if (c == '\n') {
            return true;
        }
        line += c;
        if (line.size() > kMaxLineLength) {
            throw std::runtime_error("line " + std::to_string(number) + ": is too long");
        }
    }
    return !line.empty();
}

/* The two numbers of a line, if it is not blank. A title or a third column must not become a point
 * that nobody asked for. */
void appendPair(const std::string& line, int number, Points& points) {
    std::istringstream words(line);
    std::vector<float> values;
    for (std::string word; words >> word;) {
        char* end = nullptr;
        values.push_back(std::strtof(word.c_str(), &end));
        if (*end != '\0') {
            values.back() = kNoValue;
        }
    }
    if (values.empty()) {
        return;
    }
    if (values.size() != 2 || !std::isfinite(values[0]) || !std::isfinite(values[1])) {
        throw std::runtime_error("line " + std::to_string(number) + ": two numbers are expected");
    }
    points.first.push_back(values[0]);
    points.second.push_back(values[1]);
}

}  // namespace

Points readPoints(const std::string& path) {
    std::ifstream file = openToRead(path);
    Points points;
    std::string line;
    for (int number = 1; readLine(file, number, line); ++number) {
        appendPair(line, number, points);
        if (number == kMaxLines) {
            throw std::runtime_error("holds more than " + std::to_string(kMaxLines) + " lines");
        }
    }
    if (file.bad()) {
        throw std::runtime_error("cannot be read");
    }
    if (points.size() == 0) {
        throw std::runtime_error("holds no points: two numbers a line are expected");
    }
    return points;
}

}  // namespace scan

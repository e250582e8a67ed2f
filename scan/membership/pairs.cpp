/* pairs.cpp - reads the tables that belong together. */
#include "scan/membership/pairs.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <stdexcept>

#include "scan/classes/inputs.h"

namespace scan {
namespace {

constexpr double kDecides = 0.01;  // a difference of degrees that is seen

std::vector<TablePoint> readPoints(const std::string& directory, const std::string& file) {
    TableFile table = readTableFile(directory, file);
    if (!table.findings.empty()) {
        const Finding& finding = table.findings.front();
        std::string text = file;
        if (finding.line > 0) {
            text += ": line " + std::to_string(finding.line);
        }
        throw std::runtime_error(text + ": " + finding.text);
    }
    return std::move(table.points);
}

}  // namespace

std::vector<TablePair> readPairs(const std::string& directory) {
    std::vector<TablePair> pairs;
    for (const Input& input : inputs()) {
        if (input.info->tag == nullptr) {
            continue;
        }
        TablePair pair;
        pair.tag = input.info->tag;
        const std::string rain = tableFileName(pair.tag, TableClass::kPrecipitation);
        const std::string clutter = tableFileName(pair.tag, TableClass::kClutter);
        if (!std::filesystem::exists(directory + "/" + rain) ||
            !std::filesystem::exists(directory + "/" + clutter)) {
            continue;
        }
        const std::string units = input.info->unit;  // of a texture of dBZ: dB
        pair.heading =
            std::string(input.info->texture != 0 ? "texture of " : "") + roleInfo(input.role).text;
        pair.heading += units.empty() ? "" : ", " + units;
        pair.precipitation = readPoints(directory, rain);
        pair.clutter = readPoints(directory, clutter);
        pairs.push_back(std::move(pair));
    }
    if (pairs.empty()) {
        throw std::runtime_error("holds no pair of membership functions");
    }
    return pairs;
}

std::pair<double, double> decidingRange(const TablePair& pair) {
    std::vector<double> abscissas;
    for (const auto* points : {&pair.precipitation, &pair.clutter}) {
        for (const TablePoint& point : *points) {
            abscissas.push_back(point.x);
        }
    }
    std::sort(abscissas.begin(), abscissas.end());
    const auto decides = [&](double x) {
        return std::fabs(degreeAt(pair.precipitation, x) - degreeAt(pair.clutter, x)) > kDecides;
    };
    const auto first = std::find_if(abscissas.begin(), abscissas.end(), decides);
    const auto last = std::find_if(abscissas.rbegin(), abscissas.rend(), decides);
    if (first == abscissas.end() || !(*first < *last)) {
        return {abscissas.front(), std::max(abscissas.back(), abscissas.front() + 1)};
    }
    return {*first, *last};
}

}  // namespace scan

/* check.cpp - file by file, then pair by pair. */
#include "scan/membership/check.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "scan/classes/inputs.h"
#include "scan/text.h"

namespace scan {
namespace {

constexpr double kEven = 1e-6;  // degrees that differ by less are the same

using Points = std::vector<TablePoint>;

/* The files of one quantity. */
struct Quantity {
    std::string files[kTableClasses];
    Points points[kTableClasses];  // empty: none that can be used

    bool has(TableClass c) const { return !files[static_cast<int>(c)].empty(); }
};

std::vector<std::string> tags() {
    std::vector<std::string> tags;
    for (const Input& input : inputs()) {
        if (input.info->tag != nullptr) {
            tags.emplace_back(input.info->tag);
        }
    }
    return tags;
}

std::vector<std::string> listFiles(const std::string& directory) {
    std::error_code error;
    std::filesystem::directory_iterator entries(directory, error);
    if (error) {
        throw std::runtime_error(error.message());
    }
    std::vector<std::string> names;
    for (const auto& entry : entries) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("cal_mf_", 0) == 0) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

/* All that one file can have wrong. */
std::vector<Finding> checkPoints(const std::string& file, const Points& points) {
    std::vector<Finding> findings;
    bool vanishes = false;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const TablePoint& point = points[i];
        if (i > 0 && point.x < points[i - 1].x) {
            findings.push_back({file, point.line, true, "the abscissa is below the one before"});
        }
        if (point.degree < 0 || point.degree > 1) {
            findings.push_back({file, point.line, true, "the degree is not within 0 and 1"});
        }
        if (point.degree == 0 && !vanishes) {
            vanishes = true;
            findings.push_back(
                {file, point.line, false, "the degree is 0, which overrules all other inputs"});
        }
    }
    return findings;
}

/* Whether two tables have the same degree everywhere. */
bool isSame(const Points& a, const Points& b) {
    const auto agree = [](const Points& at, const Points& other) {
        return std::all_of(at.begin(), at.end(), [&](const TablePoint& point) {
            return std::fabs(degreeAt(at, point.x) - degreeAt(other, point.x)) < kEven;
        });
    };
    return agree(a, b) && agree(b, a);
}

class Check {
  public:
    explicit Check(const std::string& directory) : directory_(directory) {
        for (const std::string& tag : tags()) {
            for (int c = 0; c < kTableClasses; ++c) {
                known_[tableFileName(tag, static_cast<TableClass>(c))] = {tag, c};
            }
        }
    }

    MembershipCheck run() {
        const std::vector<std::string> names = listFiles(directory_);
        for (const std::string& name : names) {
            readFile(name);
        }
        if (result_.files == 0) {
            add("", 0, true, "holds no membership files (cal_mf_...)");
        }
        for (const auto& [tag, quantity] : quantities_) {
            requireTwins(tag, quantity);
            comparePairs(quantity);
        }
        return result_;
    }

  private:
    void add(const std::string& file, int line, bool isError, const std::string& text) {
        result_.findings.push_back({file, line, isError, text});
    }

    void readFile(const std::string& name) {
        const auto known = known_.find(name);
        if (known == known_.end()) {
            add(printable(name), 0, false, "is not a name that the library looks for");
            return;
        }
        ++result_.files;
        const auto& [tag, c] = known->second;
        Quantity& quantity = quantities_[tag];
        quantity.files[c] = name;
        TableFile table = readTableFile(directory_, name);
        std::vector<Finding> findings = table.findings;
        const std::vector<Finding> more = checkPoints(name, table.points);
        findings.insert(findings.end(), more.begin(), more.end());
        const bool usable = std::none_of(findings.begin(), findings.end(),
                                         [](const Finding& finding) { return finding.isError; });
        if (usable) {
            quantity.points[c] = table.points;
        }
        result_.findings.insert(result_.findings.end(), findings.begin(), findings.end());
    }

    /* Ground clutter and precipitation come in pairs; the other kinds of clutter go with both. */
    void requireTwins(const std::string& tag, const Quantity& quantity) {
        const bool all = quantity.has(TableClass::kSea) || quantity.has(TableClass::kTurbine);
        for (int c = 0; c < kTableClasses; ++c) {
            const bool needed = c < 2 || all;
            if (needed && quantity.files[c].empty()) {
                const auto present =
                    std::find_if(std::begin(quantity.files), std::end(quantity.files),
                                 [](const std::string& file) { return !file.empty(); });
                add(*present, 0, true,
                    "its twin " + tableFileName(tag, static_cast<TableClass>(c)) + " is missing");
            }
        }
    }

    void comparePairs(const Quantity& quantity) {
        const Points& weather = quantity.points[static_cast<int>(TableClass::kPrecipitation)];
        for (int c = 0; c < kTableClasses; ++c) {
            const Points& points = quantity.points[c];
            if (&points == &weather || points.empty() || weather.empty()) {
                continue;
            }
            if (std::fabs(points.back().degree - weather.back().degree) >= kEven) {
                add(quantity.files[c], points.back().line, true,
                    "ends in another degree than its twin of precipitation: a missing value would "
                    "decide");
            }
            if (isSame(points, weather)) {
                add(quantity.files[c], 0, false,
                    "has the degrees of its twin of precipitation: it never decides");
            }
        }
    }

    std::string directory_;
    std::map<std::string, std::pair<std::string, int>> known_;
    std::map<std::string, Quantity> quantities_;
    MembershipCheck result_;
};

}  // namespace

int MembershipCheck::errors() const {
    return static_cast<int>(std::count_if(findings.begin(), findings.end(),
                                          [](const Finding& f) { return f.isError; }));
}

MembershipCheck checkMembership(const std::string& directory) {
    return Check(directory).run();
}

}  // namespace scan

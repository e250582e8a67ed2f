/* Looks through the rays and values of every sweep for what is unusual. */
#include "scan/fields/oddities.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <numeric>
#include <utility>
#include <vector>

#include "scan/fields/role.h"
#include "scan/fields/value_summary.h"
#include "scan/quantile.h"

namespace scan {
namespace {

/* A gap of more than this many usual steps is a gap, not a jitter. */
constexpr double kGapSteps = 2.5;
constexpr double kSameAzimuthDeg = 0.02;

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
    char text[300];
    va_list arguments;
    va_start(arguments, pattern);
    std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

/* Steps between neighbours in azimuth order, the one across north last. */
std::vector<double> azimuthSteps(const Sweep& sweep) {
    std::vector<double> sorted = sweep.azimuthDeg;
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> steps;
    for (std::size_t r = 1; r < sorted.size(); ++r) {
        steps.push_back(sorted[r] - sorted[r - 1]);
    }
    if (!sorted.empty()) {
        steps.push_back(sorted.front() + 360 - sorted.back());
    }
    return steps;
}

/* Sentences about sweeps: one that is true of several is said once. */
class Findings {
  public:
    void add(const Sweep& sweep, const std::string& sentence) {
        for (auto& [known, sweeps] : found_) {
            if (known != sentence) {
                continue;
            }
            sweeps.push_back(sweep.number);
            return;
        }
        found_.push_back({sentence, {sweep.number}});
    }

    void report(std::vector<std::string>& out, bool single) const {
        for (const auto& [sentence, sweeps] : found_) {
            out.push_back(label(sweeps, single) + sentence);
        }
    }

  private:
    static std::string label(const std::vector<int>& sweeps, bool single) {
        if (single) {
            return "";
        }
        std::string numbers;
        for (int number : sweeps) {
            numbers += (numbers.empty() ? "" : ", ") + std::to_string(number);
        }
        return (sweeps.size() == 1 ? "Sweep " : "Sweeps ") + numbers + ": ";
    }

    std::vector<std::pair<std::string, std::vector<int>>> found_;
};

void addLengths(const Sweep& sweep, Findings& out) {
    if (sweep.rayGates.empty()) {
        return;
    }
    const auto ends = std::minmax_element(sweep.rayGates.begin(), sweep.rayGates.end());
    if (*ends.first == *ends.second) {
        return;
    }
    out.add(sweep,
            format("The number of gates differs from ray to ray (%d to %d); shorter rays are "
                   "padded with missing gates.",
                   *ends.first, *ends.second));
}

void addCoverage(const Sweep& sweep, Findings& out) {
    if (sweep.rhi || sweep.nrays < 2) {
        return;
    }
    const std::vector<double> steps = azimuthSteps(sweep);
    const double gap = *std::max_element(steps.begin(), steps.end());
    if (!closesCircle(sweep)) {
        out.add(sweep, format("The rays do not close a circle (largest gap %.1f "
                              "degrees).",
                              gap));
    }
    const auto same = std::count_if(steps.begin(), steps.end(),
                                    [](double step) { return step < kSameAzimuthDeg; });
    if (same > 0) {
        out.add(sweep,
                format("%ld rays share their azimuth with another.", static_cast<long>(same)));
    }
}

void addOrder(const Sweep& sweep, Findings& out) {
    if (sweep.rhi || sweep.nrays < 2) {
        return;
    }
    int forward = 0;
    for (std::size_t r = 1; r < sweep.azimuthDeg.size(); ++r) {
        forward += std::remainder(sweep.azimuthDeg[r] - sweep.azimuthDeg[r - 1], 360.0) >= 0;
    }
    const int turns = std::min(forward, sweep.nrays - 1 - forward);
    if (turns > 0) {
        out.add(sweep, format("The azimuths are not in order (%d steps back).", turns));
    }
    const double first = sweep.azimuthDeg.front();
    if (std::abs(std::remainder(first, 360.0)) > 1) {
        out.add(sweep, format("The first ray looks at %.1f degrees, not north.", first));
    }
}

void addFieldOddity(const Sweep& sweep, const Field& field, Findings& out) {
    const Role role = roleOfName(field.name);
    const ValueSummary summary = summarise(field.values, role);
    const char* name = field.name.c_str();
    if (summary.count == 0) {
        out.add(sweep, format("%s holds no value.", name));
    } else if (summary.constant() && summary.count > 1) {
        out.add(sweep, format("%s is %g wherever it has a value.", name, summary.lowest));
    } else if (summary.shareInRange < 0.99) {
        out.add(sweep, format("%.0f %% of %s lie outside %g..%g %s: probably not the "
                              "%s, or corrupt.",
                              100 * (1 - summary.shareInRange), name, roleInfo(role).lowest,
                              roleInfo(role).highest, roleInfo(role).units, roleInfo(role).text));
    }
}

void addSite(Scan& scan) {
    if (!liesOnEarth(scan)) {
        scan.oddities.push_back("The site lies outside the Earth's coordinates.");
    }
}

void addUnknownNames(Scan& scan) {
    std::string unknown;
    for (const Field& field : scan.sweeps.front().fields) {
        if (roleOfName(field.name) == Role::kNone) {
            unknown += (unknown.empty() ? "" : ", ") + field.name;
        }
    }
    if (!unknown.empty()) {
        scan.oddities.push_back("Fields without a role in the classification: " + unknown + ".");
    }
}

}  // namespace

bool liesOnEarth(const Scan& scan) {
    return std::abs(scan.latitudeDeg) <= 90 && scan.longitudeDeg >= -180 &&
           scan.longitudeDeg <= 360;
}

double largestAzimuthGapDeg(const Sweep& sweep) {
    const std::vector<double> steps = azimuthSteps(sweep);
    return steps.empty() ? 360 : *std::max_element(steps.begin(), steps.end());
}

bool closesCircle(const Sweep& sweep) {
    if (sweep.rhi || sweep.nrays < 3) {
        return false;
    }
    const std::vector<double> steps = azimuthSteps(sweep);
    return largestAzimuthGapDeg(sweep) <= std::max(kGapSteps * upperMedian(steps), 3.0);
}

void addOddities(Scan& scan) {
    Findings findings;
    for (const Sweep& sweep : scan.sweeps) {
        addLengths(sweep, findings);
        addCoverage(sweep, findings);
        addOrder(sweep, findings);
        for (const Field& field : sweep.fields) {
            addFieldOddity(sweep, field, findings);
        }
    }
    findings.report(scan.oddities, scan.sweeps.size() == 1);
    addSite(scan);
    if (!scan.sweeps.empty()) {
        addUnknownNames(scan);
    }
}

}  // namespace scan

/* label_rule.h - labels of gates from fields of the scan itself. */
#ifndef SCAN_MEMBERSHIP_LABEL_RULE_H
#define SCAN_MEMBERSHIP_LABEL_RULE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scan/scan.h"

namespace scan {

enum class Label : std::uint8_t {
    kNotJudged,
    kWeather,
    kBeside,  // weather close to clutter: judged by strict scores only
    kClutter
};

/*
 * A condition on the gates of a sweep:
 *   "CM"         the field has a value other than 0
 *   "CM>0.5"     the field is above a number (also <, >=, <=); unknown where it has no value
 *   "ZT-DZ>10"   the difference of two fields is above a number, or only the first has a value
 *   "ZT-DZ<2"    the difference is smaller, whatever its sign
 *   "all"        every gate
 */
class GateCondition {
  public:
    /* Throws std::invalid_argument. */
    explicit GateCondition(const std::string& text);

    enum class Truth : std::uint8_t { kFalse, kTrue, kUnknown };

    /* For every gate. Throws std::runtime_error when a field is not there. */
    std::vector<Truth> test(const Sweep& sweep) const;

    /* The number of a difference that is to be above it. */
    std::optional<double> differenceAbove() const;

    /* The same condition with another number, on a difference below it. */
    GateCondition below(double number) const;

  private:
    GateCondition() = default;
    Truth testValue(float value) const;
    Truth testDifference(float before, float after) const;

    std::string field_, minus_;  // minus_ is empty for a single field; both for "all"
    bool above_ = true, orEqual_ = false;
    double number_ = 0;
    bool anyValue_ = false;
};

/* Which gates are clutter and which are weather. */
class LabelRule {
  public:
    /* Without a condition for weather, it is where the one for clutter is false; for a difference
     * above a number, where it is below a fifth of the number. Throws std::invalid_argument. */
    explicit LabelRule(const std::string& clutter, const std::string& weather = "");

    /* Labels of all gates; kBeside is not among them. Throws std::runtime_error when a field is not
     * there. */
    std::vector<Label> labels(const Sweep& sweep) const;

  private:
    GateCondition clutter_;
    std::optional<GateCondition> weather_;
};

}  // namespace scan

#endif

/* label_rule.cpp - parses and applies conditions. */
#include "scan/membership/label_rule.h"

#include <cmath>
#include <cstddef>
#include <stdexcept>

#include "scan/fields/find_field.h"
#include "scan/membership/table_file.h"

namespace scan {
namespace {

constexpr double kCalmShare = 0.2;  // of a difference that is clutter: smaller ones are weather

using Truth = GateCondition::Truth;

Truth truthOf(bool condition) {
    return condition ? Truth::kTrue : Truth::kFalse;
}

std::string trimmed(const std::string& text) {
    const auto begin = text.find_first_not_of(' ');
    if (begin == std::string::npos) {
        return "";
    }
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

double numberOf(const std::string& text) {
    double number = 0;
    if (!parseNumber(text, number)) {
        throw std::invalid_argument("\"" + text + "\" is not a number");
    }
    return number;
}

}  // namespace

GateCondition::GateCondition(const std::string& text) {
    const std::string condition = trimmed(text);
    if (condition == "all") {
        return;
    }
    const auto sign = condition.find_first_of("<>");
    field_ = trimmed(condition.substr(0, sign));
    anyValue_ = sign == std::string::npos;
    if (!anyValue_) {
        above_ = condition[sign] == '>';
        orEqual_ = sign + 1 < condition.size() && condition[sign + 1] == '=';
        number_ = numberOf(trimmed(condition.substr(sign + (orEqual_ ? 2 : 1))));
        const auto minus = field_.find('-');
        if (minus != std::string::npos) {
            minus_ = trimmed(field_.substr(minus + 1));
            field_ = trimmed(field_.substr(0, minus));
            if (minus_.empty() || !(number_ > 0)) {
                throw std::invalid_argument("a difference takes two fields and a positive number");
            }
        }
    }
    if (field_.empty()) {
        throw std::invalid_argument("names no field");
    }
}

std::optional<double> GateCondition::differenceAbove() const {
    return !minus_.empty() && above_ ? std::optional(number_) : std::nullopt;
}

GateCondition GateCondition::below(double number) const {
    GateCondition other = *this;
    other.above_ = false;
    other.number_ = number;
    return other;
}

Truth GateCondition::testValue(float value) const {
    if (anyValue_) {
        return truthOf(std::isfinite(value) && value != 0);
    }
    if (!std::isfinite(value)) {
        return Truth::kUnknown;
    }
    const auto x = static_cast<double>(value);
    return truthOf((above_ ? x > number_ : x < number_) || (orEqual_ && x == number_));
}

Truth GateCondition::testDifference(float before, float after) const {
    if (!std::isfinite(before)) {
        return Truth::kUnknown;
    }
    if (!std::isfinite(after)) {
        return above_ ? Truth::kTrue : Truth::kUnknown;
    }
    return testValue(above_ ? before - after : std::fabs(before - after));
}

std::vector<Truth> GateCondition::test(const Sweep& sweep) const {
    const auto rays = static_cast<std::size_t>(sweep.nrays);
    std::vector<Truth> truths(rays * static_cast<std::size_t>(sweep.ngates), Truth::kTrue);
    if (field_.empty()) {
        return truths;
    }
    const std::vector<float>& field = findField(sweep, field_).values;
    const std::vector<float>* after = minus_.empty() ? nullptr : &findField(sweep, minus_).values;
    for (std::size_t i = 0; i < truths.size(); ++i) {
        truths[i] = after == nullptr ? testValue(field[i]) : testDifference(field[i], (*after)[i]);
    }
    return truths;
}

LabelRule::LabelRule(const std::string& clutter, const std::string& weather) : clutter_(clutter) {
    if (!weather.empty()) {
        weather_.emplace(weather);
    } else if (const auto number = clutter_.differenceAbove()) {
        weather_ = clutter_.below(kCalmShare * *number);
    }
}

std::vector<Label> LabelRule::labels(const Sweep& sweep) const {
    const std::vector<Truth> clutter = clutter_.test(sweep);
    const std::vector<Truth> weather = weather_ ? weather_->test(sweep) : std::vector<Truth>();
    std::vector<Label> labels(clutter.size(), Label::kNotJudged);
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const bool calm =
            weather.empty() ? clutter[i] == Truth::kFalse : weather[i] == Truth::kTrue;
        if (clutter[i] == Truth::kTrue) {
            labels[i] = Label::kClutter;
        } else if (calm) {
            labels[i] = Label::kWeather;
        }
    }
    return labels;
}

}  // namespace scan

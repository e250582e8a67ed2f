/* field_words.cpp - names and scales of Universal Format fields. */
#include "scan/formats/uf/field_words.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <stdexcept>

#include "formats/uf/fields.h"
#include "formats/uf/layout.h"
#include "scan/class_codes.h"
#include "scan/fields/role.h"
#include "scan/fields/value_summary.h"
#include "scan/text.h"

namespace scan {
namespace {

constexpr double kLargestWord = 32767;
constexpr int kUsualWordsPerUnit = 100;

/* For roles in the order of their enumeration. */
constexpr const char* kRoleLetters[] = {"DZ", "DR", "PH", "RH", "VR", "SW", "LD", "CM", "KD", "SN"};
static_assert(std::size(kRoleLetters) == kRoleCount);

/* Quantities between 0 and 1 are kept finer than others. */
int finestScale(const Field& field) {
    constexpr int kOfShares = 10000;
    if (field.wordsPerUnit != 0) {
        return field.wordsPerUnit;
    }
    const Role role = roleOfName(field.name);
    return role == Role::kRhv || role == Role::kPdf ? kOfShares : kUsualWordsPerUnit;
}

/* The finest scale at which the largest value has a word. */
int scaleFor(int finest, double largest) {
    constexpr int kScales[] = {10000, 1000, 100, 50, 20, 10, 5, 2};
    if (largest * finest <= kLargestWord) {
        return finest;
    }
    const auto* found = std::find_if(std::begin(kScales), std::end(kScales), [&](int scale) {
        return scale < finest && largest * scale <= kLargestWord;
    });
    return found == std::end(kScales) ? 1 : *found;
}

/* Possible names of a field, the preferred first. */
std::vector<std::string> possibleNames(const Field& field) {
    std::vector<std::string> names;
    if (isClassField(field)) {
        names.push_back(kClassFieldName);
    }
    const std::string usual = clutter::formats::ufNameOf(field.name);
    if (usual != clutter::formats::kUnknownName) {
        names.push_back(usual);
    }
    if (field.name.size() == 2) {
        names.push_back(field.name);
    }
    const Role role = roleOfName(field.name);
    if (role != Role::kNone) {
        names.push_back(kRoleLetters[static_cast<int>(role)]);
    }
    names.push_back(clutter::formats::kUnknownName);
    return names;
}

std::string lettersFor(const Field& field, const std::set<std::string>& taken) {
    for (const std::string& name : possibleNames(field)) {
        if (taken.count(name) == 0) {
            return name;
        }
    }
    std::string letters = "U1";
    while (taken.count(letters) > 0) {
        letters[1] = letters[1] == '9' ? 'A' : static_cast<char>(letters[1] + 1);
    }
    return letters;
}

const Field* findExact(const Sweep& sweep, const std::string& name) {
    const auto found = std::find_if(sweep.fields.begin(), sweep.fields.end(),
                                    [&](const Field& field) { return field.name == name; });
    return found == sweep.fields.end() ? nullptr : &*found;
}

/* Of the finite values of a field in all sweeps. */
double largestOf(const Scan& scan, const std::string& name) {
    double largest = 0;
    for (const Sweep& sweep : scan.sweeps) {
        if (const Field* field = findExact(sweep, name)) {
            const ValueSummary summary = summarise(field->values, Role::kNone);
            largest = std::max({largest, std::abs(static_cast<double>(summary.lowest)),
                                std::abs(static_cast<double>(summary.highest))});
        }
    }
    return largest;
}

}  // namespace

std::vector<FieldWords> planFields(const Scan& scan, CheckedWords& checked) {
    std::vector<FieldWords> plan;
    std::set<std::string> names;
    std::set<std::string> taken;
    for (const Sweep& sweep : scan.sweeps) {
        for (const Field& field : sweep.fields) {
            if (!names.insert(field.name).second) {
                continue;
            }
            const double largest = largestOf(scan, field.name);
            plan.push_back(
                {field.name, lettersFor(field, taken), scaleFor(finestScale(field), largest)});
            taken.insert(plan.back().letters);
            if (largest > kLargestWord) {
                checked.note(checked.kind() + " cannot hold the values of " +
                             printable(field.name) + " beyond 32767: they are missing");
            }
        }
    }
    if (plan.size() > clutter::formats::kMaxFields) {
        throw std::runtime_error("a Universal Format ray holds 20 fields, and there are " +
                                 std::to_string(plan.size()));
    }
    return plan;
}

/*
 * Rounds halves away from zero as std::round does, by adding half a word and cutting off: a value
 * of 24 bits times a scale of 14 has 38, so that the sum of two numbers below 2^15 is exact
 * wherever its whole part could change.
 */
void fillFieldWords(const float* values, std::size_t n, int wordsPerUnit, short* words) {
    if (values == nullptr) {
        std::fill(words, words + n, kMissingWord);
        return;
    }
    const double scale = wordsPerUnit;
    for (std::size_t i = 0; i < n; ++i) {
        const double word = static_cast<double>(values[i]) * scale;
        const bool held = std::abs(word) < kLargestWord + 0.5;  // false for NaN
        const double whole = (held ? word : 0.0) + std::copysign(0.5, word);
        words[i] = held ? static_cast<short>(static_cast<int>(whole)) : kMissingWord;
    }
}

}  // namespace scan

/* clean.cpp - which fields and gates lose their values. */
#include "scan/classes/clean.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "scan/class_codes.h"
#include "scan/fields/role.h"
#include "scan/formats/writing/class_flags.h"
#include "scan/text.h"

namespace scan {
namespace {

/* What names of fields about the signal begin with, in lower case. */
constexpr std::string_view kSignalNames[] = {
    "snr", "sqi",     "ccor",    "cmap", "cpa", "qcflags", "class", "normalized_coherent_power",
    "ncp", "signal_", "clutter", "log",  "csp",
};
constexpr std::string_view kSignalLetters[] = {"cm", "cf", "sq", "nc", "sn"};  // whole names

bool isOneOf(const std::vector<float>& codes, float code) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

std::vector<std::uint8_t> gatesToBlank(const std::vector<float>& classes,
                                       const std::vector<float>& kept) {
    std::vector<std::uint8_t> gates(classes.size());
    for (std::size_t i = 0; i < classes.size(); ++i) {
        gates[i] = !std::isnan(classes[i]) && !isOneOf(kept, classes[i]);
    }
    return gates;
}

void blank(Field& field, const std::vector<std::uint8_t>& gates) {
    field.noEchoGates.resize(field.values.size());
    for (std::size_t i = 0; i < gates.size(); ++i) {
        if (gates[i] != 0 && !std::isnan(field.values[i])) {
            field.noEchoGates[i] = 1;
            field.values[i] = kNoValue;
        }
    }
}

std::vector<Field*> chosenFields(Sweep& sweep, const std::vector<std::string>& names) {
    std::vector<Field*> chosen;
    for (Field& field : sweep.fields) {
        const std::string name = lowerCase(field.name);
        const bool named = std::any_of(names.begin(), names.end(), [&](const std::string& wanted) {
            return lowerCase(wanted) == name;
        });
        if (names.empty() ? isSpoiledByClutter(name) && !isClassField(field) : named) {
            chosen.push_back(&field);
        }
    }
    if (chosen.empty()) {
        throw std::runtime_error("sweep " + std::to_string(sweep.number) +
                                 " has no field to clean");
    }
    return chosen;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : "|") + text;
    }
    return all;
}

}  // namespace

std::vector<float> parseClasses(const std::string& names) {
    std::vector<float> codes;
    for (std::size_t begin = 0; begin <= names.size();) {
        const std::size_t end = std::min(names.find(',', begin), names.size());
        std::string name = lowerCase(names.substr(begin, end - begin));
        std::replace(name.begin(), name.end(), '-', '_');
        const std::size_t before = codes.size();
        for (const ClassFlag& flag : kClassFlags) {
            const bool anyClutter = name == "clutter" && flag.code >= kGroundClutter;
            if (name == flag.name || anyClutter) {
                codes.push_back(flag.code);
            }
        }
        if (codes.size() == before) {
            throw std::invalid_argument(
                "no such class: " + printable(name) +
                " (precipitation, noise, clutter, ground-clutter, sea-clutter, turbine-clutter)");
        }
        begin = end + 1;
    }
    return codes;
}

bool isSpoiledByClutter(const std::string& field) {
    const std::string name = lowerCase(field);
    const auto begins = [&](std::string_view prefix) { return name.rfind(prefix, 0) == 0; };
    const auto is = [&](std::string_view whole) { return name == whole; };
    return roleOfName(name) != Role::kPdf &&
           std::none_of(std::begin(kSignalNames), std::end(kSignalNames), begins) &&
           std::none_of(std::begin(kSignalLetters), std::end(kSignalLetters), is);
}

CleanedFields cleanSweep(Sweep& sweep, const std::vector<float>& classes,
                         const CleanOptions& options) {
    CleanedFields cleaned;
    cleaned.gates = gatesToBlank(classes, options.kept);
    for (Field* field : chosenFields(sweep, options.fields)) {
        blank(*field, cleaned.gates);
        cleaned.fields.push_back(field->name);
    }
    return cleaned;
}

std::string historyOfCleaning(const CleanOptions& options) {
    std::vector<std::string> names;
    for (const ClassFlag& flag : kClassFlags) {
        if (isOneOf(options.kept, flag.code)) {
            names.emplace_back(flag.name);
        }
    }
    return "clutterclassifier: clean(keep=" + joined(names) +
           (options.fields.empty() ? "" : ", fields=" + joined(options.fields)) + ")";
}

}  // namespace scan

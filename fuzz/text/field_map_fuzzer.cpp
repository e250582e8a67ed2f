/*
 * Takes a user's words: maps of fields, lists of inputs and classes, names of fields and anything
 * to be printed. The input is the text; what it means, written and taken again, means the same.
 */
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>

#include "fuzz/support/require.h"
#include "scan/class_codes.h"
#include "scan/classes/classify_sweep.h"
#include "scan/classes/clean.h"
#include "scan/fields/field_map.h"
#include "scan/fields/role.h"
#include "scan/text.h"

namespace {

using namespace clutter::fuzz;

std::string keyOf(scan::Role role) {
    return role == scan::Role::kNone ? "none" : scan::roleInfo(role).key;
}

void takeMap(const std::string& text) {
    try {
        const scan::FieldMap map = scan::parseFieldMap(text);
        std::string again;
        for (const auto& [name, role] : map) {
            again += (again.empty() ? "" : ",") + name + "=" + keyOf(role);
        }
        require(again.empty() || scan::parseFieldMap(again) == map, "a map says the same again");
    } catch (const std::invalid_argument& error) {
        require(error.what()[0] != '\0', "a refusal has a reason");
    }
}

void takeInputs(const std::string& text) {
    try {
        const int mask = scan::parseInputs(text);
        require(mask > 0 && mask < 512, "a list names some of nine inputs");
        require(!scan::describeInputs(mask).empty(), "every mask can be described");
    } catch (const std::invalid_argument& error) {
        require(error.what()[0] != '\0', "a refusal has a reason");
    }
}

void takeClasses(const std::string& text) {
    try {
        for (const float code : scan::parseClasses(text)) {
            require(std::find(std::begin(scan::kClassCodes), std::end(scan::kClassCodes), code) !=
                        std::end(scan::kClassCodes),
                    "a class is one of five");
        }
    } catch (const std::invalid_argument& error) {
        require(error.what()[0] != '\0', "a refusal has a reason");
    }
}

void takeName(const std::string& text) {
    require(scan::roleOfName(text) == scan::roleOfName(scan::lowerCase(text)), "case is the same");
    for (const char c : scan::printable(text)) {
        require(std::isprint(static_cast<unsigned char>(c)) != 0, "no control characters");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text = text.c_str();  // a command line's text ends at its first zero
    takeMap(text);
    takeInputs(text);
    takeClasses(text);
    takeName(text);
    return 0;
}

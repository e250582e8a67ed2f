/* inputs.h - the inputs of the classification: which field each takes, and how users name them. */
#ifndef SCAN_CLASSES_INPUTS_H
#define SCAN_CLASSES_INPUTS_H

#include <string>
#include <vector>

#include "clutterclassifier/classifier.h"
#include "scan/fields/role.h"

namespace scan {

/* One input, as the library describes it, and the role of its field. */
struct Input {
    const clutter_input_info* info;
    Role role;

    [[nodiscard]] int bit() const { return static_cast<int>(info->bit); }
};

/* All of them, in the order of their bits. */
const std::vector<Input>& inputs();

constexpr int kAllInputs = CLUTTER_ALL_INPUTS;
/* The default: all inputs except the spectrum width. */
constexpr int kDefaultInputs = CLUTTER_ALL_INPUTS & ~CLUTTER_WIDTH;

/* Whether one of the inputs takes the field of a role. The reflectivity is always needed. */
bool takesPart(Role role, int mask);

/* Parses "zhh-texture,vel,...", "textures" or "all". Throws std::invalid_argument. */
int parseInputs(const std::string& text);

/* "textures of zhh zdr; vel": the inverse, for humans. */
std::string describeInputs(int mask);

}  // namespace scan

#endif

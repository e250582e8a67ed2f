/*
 * The table of inputs, for hosts.
 */
#include "fuzzy/classifiers/inputs.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "clutterclassifier/classifier.h"

namespace {

namespace fuzzy = clutter::fuzzy;

static_assert(int{fuzzy::kInputCount} == int{CLUTTER_INPUT_COUNT});
static_assert(CLUTTER_ZHH_TEXTURE == 1 << fuzzy::kStdZhh &&
              CLUTTER_ZDR_TEXTURE == 1 << fuzzy::kStdZdr &&
              CLUTTER_PHIDP_TEXTURE == 1 << fuzzy::kStdPdp &&
              CLUTTER_RHOHV_TEXTURE == 1 << fuzzy::kStdRhv &&
              CLUTTER_VELOCITY == 1 << fuzzy::kVelocity && CLUTTER_LDR == 1 << fuzzy::kLdr &&
              CLUTTER_LIKELIHOOD == 1 << fuzzy::kClutterLikelihood &&
              CLUTTER_RHOHV == 1 << fuzzy::kRhv && CLUTTER_WIDTH == 1 << fuzzy::kWidth);
static_assert(CLUTTER_TEXTURES == (1 << fuzzy::kTextureCount) - 1 &&
              CLUTTER_ALL_INPUTS == (1 << fuzzy::kInputCount) - 1);

constexpr std::array<clutter_input_info, fuzzy::kInputCount> makeInfos() {
    std::array<clutter_input_info, fuzzy::kInputCount> infos = {};
    for (std::size_t i = 0; i < infos.size(); ++i) {
        const fuzzy::InputFacts& facts = fuzzy::kInputs[i];
        infos[i] = {facts.name,
                    facts.key,
                    facts.tag,
                    facts.unit,
                    std::uint32_t{1} << i,
                    facts.texture ? 1 : 0,
                    facts.low,
                    facts.high};
    }
    return infos;
}

constexpr std::array<clutter_input_info, fuzzy::kInputCount> kInfos = makeInfos();

}  // namespace

clutter_status clutter_get_input(int32_t index, const clutter_input_info** info) {
    if (index < 0 || index >= CLUTTER_INPUT_COUNT || info == nullptr) {
        return CLUTTER_INVALID_ARGUMENT;
    }
    *info = &kInfos[static_cast<std::size_t>(index)];
    return CLUTTER_OK;
}

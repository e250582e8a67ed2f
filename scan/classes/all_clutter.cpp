#include "scan/classes/all_clutter.h"

#include <cstddef>
#include <stdexcept>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/classes/classify_sweep.h"

namespace scan {
namespace {

constexpr int kInputs = 9;
constexpr int kTextureInputs = 4;

/* In the order of the classifier's arguments; the bits of the mask are in the same order. */
constexpr Cpluvek Crres::*kRecords[kInputs] = {&Crres::zhh, &Crres::zdr, &Crres::pdp,
                                               &Crres::rhv, &Crres::vel, &Crres::ldr,
                                               &Crres::pdf, &Crres::rhv, &Crres::wid};

/* The classifier's codes: ground clutter, precipitation, sea clutter, turbine clutter. */
float classOf(float code) {
    constexpr float kClasses[] = {kGroundClutter, kPrecipitation, kSeaClutter, kTurbineClutter};
    return code >= 0 ? kClasses[static_cast<int>(code)] : kPrecipitation;
}

std::vector<float> textureOf(Crres& context, float* values, std::vector<float>& noise) {
    std::vector<float> texture(noise.size());
    context.dsp.GetNxNPointStdWithMask(values, noise.data(), context.zhh.ngates, context.zhh.nrays,
                                       texture.data(), context.texgates, context.texrays);
    return texture;
}

}  // namespace

void tellClutterApart(Crres& context, int mask) {
    const auto count =
        static_cast<size_t>(context.zhh.ngates) * static_cast<size_t>(context.zhh.nrays);
    std::vector<float> noise(count);
    for (size_t i = 0; i < count; ++i) noise[i] = context.ccl.data[i] == kNoise ? kNoise : 0;
    std::vector<float> textures[kTextureInputs];
    float* inputs[kInputs] = {};
    for (int i = 0; i < kInputs; ++i) {
        float* values = (context.*kRecords[i]).data;
        if ((mask & 1 << i) == 0 || values == nullptr) continue;
        inputs[i] = values;
        if (i >= kTextureInputs) continue;
        textures[i] = textureOf(context, values, noise);
        inputs[i] = textures[i].data();
    }
    std::vector<float> codes(count);
    if (context.radarpro.PrecipitationAllClutterClassification(
            context.mfdir, inputs[0], inputs[1], inputs[2], inputs[3], inputs[4], inputs[5],
            inputs[6], inputs[7], inputs[8], codes.data(), static_cast<int>(count), nullptr,
            1) != 1)
        throw std::runtime_error("the membership files of sea and turbine clutter are missing");
    for (size_t i = 0; i < count; ++i) {
        if (noise[i] == 0) context.ccl.data[i] = classOf(codes[i]);
    }
}

}  // namespace scan

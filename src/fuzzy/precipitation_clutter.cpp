#include "fuzzy/precipitation_clutter.h"

#include <algorithm>
#include <string>

#include "clutterclassifier/Cradarpro.h"

namespace clutter::fuzzy {
namespace {

/* tag: part of the membership file's name; null where the value itself is the degree of clutter. */
struct InputVariable {
    const char* name;
    float minval;
    float maxval;
    const char* tag;
};

constexpr InputVariable kVariables[kInputCount] = {
    {"stdZhh", 0.0f, 20.0f, "sZhh"},    {"stdZdr", 0.0f, 10.0f, "sZdr"},
    {"stdPdp", 0.0f, 50.0f, "sPdp"},    {"stdRhv", 0.0f, 0.5f, "sRhv"},
    {"Velocity", -50.0f, 50.0f, "Vel"}, {"LDR", -40.0f, 0.0f, "LDR"},
    {"PDF", -40.0f, 0.0f, nullptr},  // the range of LDR, which hosts see
    {"Rhv", 0.0f, 1.0f, "Rhv"},         {"W", 0.0f, 5.0f, "Wid"},
};

/* In rule order: rule k uses function k of every input and gives class k. */
struct ClassName {
    const char* name;
    const char* fileSuffix;
    const char* likelihoodShape;
};

constexpr ClassName kClasses[kClassCount] = {
    {"ground clutter", "_clutter.dat", "same"},
    {"precipitation", "_precipi.dat", "complement"},
};

std::string functionType(const std::string& dir, const InputVariable& variable,
                         const ClassName& name) {
    if (variable.tag == nullptr) return name.likelihoodShape;
    return dir + "cal_mf_" + variable.tag + name.fileSuffix;
}

void fillFunctions(Cfuzzy& engine, const std::string& dir) {
    float params[5] = {1, 1, 1, 1, 1};  // no function of this system reads them
    for (int i = 0; i < kInputCount; ++i) {
        for (int c = 0; c < kClassCount; ++c) {
            const std::string type = functionType(dir, kVariables[i], kClasses[c]);
            engine.Fillmfs(i, c, "input", kClasses[c].name, type.c_str(), params);
        }
    }
    for (int c = 0; c < kClassCount; ++c) {
        engine.Fillmfs(0, c, "output", kClasses[c].name, "none", params);
    }
}

void fillRules(Cfuzzy& engine, float* const (&arrays)[kInputCount]) {
    short table[kClassCount][kInputCount + 1];
    for (short c = 0; c < kClassCount; ++c) {
        for (int i = 0; i < kInputCount; ++i) table[c][i] = arrays[i] != nullptr ? c : short{-1};
        table[c][kInputCount] = c;
    }
    engine.Fillrules(table[0], kClassCount);
}

}  // namespace

PrecipitationClutterEngine::PrecipitationClutterEngine(const char* dir,
                                                       float* const (&arrays)[kInputCount])
    : Cfuzzy(kInputCount, kClassCount, 1, kClassCount) {
    for (int i = 0; i < kInputCount; ++i) {
        FillVars(i, "input", kVariables[i].name, kVariables[i].minval, kVariables[i].maxval);
        AddressDataPointers(i, arrays[i]);
    }
    FillVars(0, "output", "Particle", 0.0f, 2.0f);
    fillFunctions(*this, dir != nullptr ? dir : "");
    fillRules(*this, arrays);
}

}  // namespace clutter::fuzzy

int Cradarpro::PrecipitationClutterClassification(char* dir, float* stdZhh, float* stdZdr,
                                                  float* stdPdp, float* stdRhv, float* velocity,
                                                  float* ldr, float* pdf, float* rhv, float* width,
                                                  float* out, int n, double* weights,
                                                  int combination) {
    using namespace clutter::fuzzy;
    if (out == nullptr) return 0;
    float* const arrays[kInputCount] = {stdZhh, stdZdr, stdPdp, stdRhv, velocity,
                                        ldr,    pdf,    rhv,    width};
    if (std::all_of(std::begin(arrays), std::end(arrays), [](float* a) { return a == nullptr; })) {
        std::fill_n(out, std::max(n, 0), -1.0f);
        return 0;
    }
    PrecipitationClutterEngine engine(dir, arrays);
    if (weights != nullptr) {
        engine.combination = combination;
        std::copy_n(weights, static_cast<int>(kInputCount), engine.weights);
    }
    return engine.Evaluate(out, n);
}

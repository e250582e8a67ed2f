/*
 * Variables, membership functions and rules of the classifiers of precipitation and clutter.
 */
#include "fuzzy/classifiers/precipitation_clutter.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "clutterclassifier/Cradarpro.h"

namespace clutter::fuzzy {
namespace {

/* In rule order: rule k uses function k of every input and gives class k. */
struct ClassName {
    const char* name;
    const char* fileSuffix;
    const char* likelihoodShape;
};

constexpr ClassName kClasses[kAllClutter] = {
    {"ground clutter", "_clutter.dat", "same"},
    {"precipitation", "_precipi.dat", "complement"},
    {"sea clutter", "_seaclut.dat", "same"},  // one likelihood serves for clutter of every kind
    {"turbine clutter", "_turclut.dat", "same"},
};

/* The first input has two blanks more in one name, which hosts that look names up may see. */
const char* functionName(int input, int c) {
    const bool sea = static_cast<float>(c) == kSeaClutter;
    return input == kStdZhh && sea ? "sea clutter  " : kClasses[c].name;
}

std::string functionType(const std::string& dir, int input, int c) {
    return kInputs[input].tag != nullptr ? membershipFile(dir, input, c)
                                         : kClasses[c].likelihoodShape;
}

void fillFunctions(Cfuzzy& engine, const std::string& dir, int classes) {
    float params[5] = {1, 1, 1, 1, 1};  // no function of this system reads them
    for (int i = 0; i < kInputCount; ++i) {
        for (int c = 0; c < classes; ++c) {
            const std::string type = functionType(dir, i, c);
            engine.Fillmfs(i, c, "input", functionName(i, c), type.c_str(), params);
        }
    }
    for (int c = 0; c < classes; ++c) {
        engine.Fillmfs(0, c, "output", kClasses[c].name, "none", params);
    }
}

/* Rule k uses function k of every input. Only the first two rules leave an absent input out by
 * themselves; in the others the engine does, to which an input without an array is absent too. */
short functionOf(short rule, const float* array) {
    return array == nullptr && rule < kGroundOnly ? short{-1} : rule;
}

void fillRules(Cfuzzy& engine, float* const (&arrays)[kInputCount], int classes) {
    short table[kAllClutter][kInputCount + 1];
    for (int c = 0; c < classes; ++c) {
        const auto rule = static_cast<short>(c);
        for (int i = 0; i < kInputCount; ++i) {
            table[c][i] = functionOf(rule, arrays[i]);
        }
        table[c][kInputCount] = rule;
    }
    engine.Fillrules(table[0], classes);
}

}  // namespace

std::string membershipFile(const std::string& dir, int input, int fuzzyClass) {
    return dir + "cal_mf_" + kInputs[input].tag + kClasses[fuzzyClass].fileSuffix;
}

PrecipitationClutterEngine::PrecipitationClutterEngine(const char* dir,
                                                       float* const (&arrays)[kInputCount],
                                                       int classes)
    : Cfuzzy(kInputCount, classes, 1, classes) {
    for (int i = 0; i < kInputCount; ++i) {
        FillVars(i, "input", kInputs[i].variable, kInputs[i].minval, kInputs[i].maxval);
        AddressDataPointers(i, arrays[i]);
    }
    FillVars(0, "output", "Particle", 0.0f, static_cast<float>(classes));
    fillFunctions(*this, dir != nullptr ? dir : "", classes);
    fillRules(*this, arrays, classes);
}

int classifyClutter(const ClutterQuestion& question, int classes) {
    if (question.out == nullptr) {
        return 0;
    }
    const auto& arrays = question.arrays;
    if (std::all_of(std::begin(arrays), std::end(arrays), [](float* a) { return a == nullptr; })) {
        std::fill_n(question.out, std::max(question.n, 0), -1.0f);
        return 0;
    }
    PrecipitationClutterEngine engine(question.dir, arrays, classes);
    if (question.weights != nullptr) {
        engine.combination = question.combination;
        std::copy_n(question.weights, static_cast<int>(kInputCount), engine.weights);
    }
    return engine.Evaluate(question.out, question.n);
}

}  // namespace clutter::fuzzy

int Cradarpro::PrecipitationClutterClassification(char* dir, float* stdZhh, float* stdZdr,
                                                  float* stdPdp, float* stdRhv, float* velocity,
                                                  float* ldr, float* pdf, float* rhv, float* width,
                                                  float* out, int n, double* weights,
                                                  int combination) {
    using namespace clutter::fuzzy;
    return classifyClutter({dir,
                            {stdZhh, stdZdr, stdPdp, stdRhv, velocity, ldr, pdf, rhv, width},
                            out,
                            n,
                            weights,
                            combination},
                           kGroundOnly);
}

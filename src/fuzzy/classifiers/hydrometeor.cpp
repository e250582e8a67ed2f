/*
 * The frame of a hydrometeor classifier: variables, functions and rules are there, their parameters
 * are placeholders. It is incomplete on purpose, since hosts call it as it is: the two height
 * fields have no functions, neither has the output, and the last rule names a function that no
 * input has. Every call with an input therefore ends in the engine's "not found".
 */
#include <algorithm>
#include <iterator>

#include "clutterclassifier/Cfuzzy.h"
#include "clutterclassifier/Cradarpro.h"

namespace {

constexpr int kInputs = 6;
constexpr int kInputsWithFunctions = 4;
constexpr int kFunctions = 4;
constexpr short kRules = 5;

struct Variable {
    const char* name;
    float minval;
    float maxval;
};

constexpr Variable kVariables[kInputs] = {
    {"Zh", -10.0f, 60.0f}, {"Zdr", -1.0f, 5.0f},   {"Rhv", 0.0f, 1.0f},
    {"LDR", -40.0f, 0.0f}, {"H0", 0.0f, 10000.0f}, {"FL", 0.0f, 10000.0f},
};

constexpr const char* kClassNames[kFunctions] = {"rain", "snow", "melting snow", "hail"};

/* Rain reaches up to a plateau of reflectivity; everything else is a bell. */
const char* shapeName(int input, int function) {
    return input == 0 && function == 0 ? "gaussian2s" : "gaussian";
}

void fillFunctions(Cfuzzy& engine) {
    float params[5] = {1, 0, 1, 1, 1};  // width 1, centre 0; plateau from 0 to 1
    for (int i = 0; i < kInputsWithFunctions; ++i) {
        for (int f = 0; f < kFunctions; ++f) {
            engine.Fillmfs(i, f, "input", kClassNames[f], shapeName(i, f), params);
        }
    }
}

void fillRules(Cfuzzy& engine, float* const (&arrays)[kInputs]) {
    short table[kRules][kInputs + 1];
    for (short k = 0; k < kRules; ++k) {
        for (int i = 0; i < kInputs; ++i) {
            table[k][i] = arrays[i] != nullptr ? k : short{-1};
        }
        table[k][kInputs] = k;
    }
    engine.Fillrules(table[0], kRules);
}

}  // namespace

void Cradarpro::HydrometeorClassification(char*, float* zh, float* zdr, float* rhv, float* ldr,
                                          float* h0, float* fl, float* out, int n) {
    if (out == nullptr) {
        return;
    }
    float* const arrays[kInputs] = {zh, zdr, rhv, ldr, h0, fl};
    if (std::all_of(std::begin(arrays), std::end(arrays), [](float* a) { return a == nullptr; })) {
        std::fill_n(out, std::max(n, 0), -1.0f);
        return;
    }
    Cfuzzy engine(kInputs, kFunctions, 1, kFunctions);
    for (int i = 0; i < kInputs; ++i) {
        engine.FillVars(i, "input", kVariables[i].name, kVariables[i].minval, kVariables[i].maxval);
        engine.AddressDataPointers(i, arrays[i]);
    }
    engine.FillVars(0, "output", "Particle", 0.0f, 5.0f);
    fillFunctions(engine);
    fillRules(engine, arrays);
    engine.Evaluate(out, n);
}

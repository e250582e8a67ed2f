/*
 * inputs.h - the nine inputs of the classifiers of precipitation and clutter, once for everything.
 *
 * Input i has bit 1 << i in every mask and index i in every list.
 */
#ifndef CLUTTER_FUZZY_INPUTS_H
#define CLUTTER_FUZZY_INPUTS_H

namespace clutter::fuzzy {

enum Input {
    kStdZhh,
    kStdZdr,
    kStdPdp,
    kStdRhv,
    kVelocity,
    kLdr,
    kClutterLikelihood,
    kRhv,
    kWidth,
    kInputCount
};

constexpr int kTextureCount = 4;  // the first inputs

/* The fields of a scan that the inputs come from. */
enum Field {
    kFieldZhh,
    kFieldZdr,
    kFieldPdp,
    kFieldRhv,
    kFieldVelocity,
    kFieldLdr,
    kFieldLikelihood,
    kFieldWidth,
    kFieldCount
};

struct InputFacts {
    Field field;
    bool texture;          // of the field, else its values
    const char* variable;  // name in the engine, and the range that it stores there
    float minval;
    float maxval;
    const char* tag;   // of the membership files; null: the value itself is the degree of clutter
    const char* name;  // for users
    const char* key;   // of the field, for users
    const char* unit;
    double low;  // usual range
    double high;
};

constexpr InputFacts kInputs[kInputCount] = {
    {kFieldZhh, true, "stdZhh", 0, 20, "sZhh", "zhh-texture", "zhh", "dB", 0, 20},
    {kFieldZdr, true, "stdZdr", 0, 10, "sZdr", "zdr-texture", "zdr", "dB", 0, 10},
    {kFieldPdp, true, "stdPdp", 0, 50, "sPdp", "pdp-texture", "pdp", "degrees", 0, 100},
    {kFieldRhv, true, "stdRhv", 0, 0.5f, "sRhv", "rhv-texture", "rhv", "1", 0, 0.5},
    {kFieldVelocity, false, "Velocity", -50, 50, "Vel", "vel", "vel", "m/s", -50, 50},
    {kFieldLdr, false, "LDR", -40, 0, "LDR", "ldr", "ldr", "dB", -40, 0},
    // The engine stores the range of LDR, which hosts see.
    {kFieldLikelihood, false, "PDF", -40, 0, nullptr, "pdf", "pdf", "1", 0, 1},
    {kFieldRhv, false, "Rhv", 0, 1, "Rhv", "rhv", "rhv", "1", 0, 1},
    {kFieldWidth, false, "W", 0, 5, "Wid", "wid", "wid", "m/s", 0, 5},
};

static_assert(kInputs[kTextureCount - 1].texture && !kInputs[kTextureCount].texture,
              "textures come first");

}  // namespace clutter::fuzzy

#endif

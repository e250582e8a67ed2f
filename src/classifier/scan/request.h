/*
 * request.h - a checked classification: fields to read, and how to decide.
 */
#ifndef CLUTTER_CLASSIFIER_REQUEST_H
#define CLUTTER_CLASSIFIER_REQUEST_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "classifier/functions/membership_set.h"
#include "clutterclassifier/classifier.h"
#include "driver/scan_import.h"
#include "dsp/windows/row_source.h"
#include "dsp/windows/texture.h"

namespace clutter::classifier {

/* A field with its stride resolved. */
struct FieldView {
    const void* values = nullptr;
    std::ptrdiff_t stride = 0;
    bool isDouble = false;
};

struct Request {
    int rays = 0;
    int gates = 0;
    /* With the rays that keep the ends of a sector apart. */
    dsp::PolarShape shape = {0, 0};
    std::array<FieldView, fuzzy::kFieldCount> fields;
    FieldView snr;
    const std::uint8_t* noise = nullptr;
    std::ptrdiff_t noiseStride = 0;
    driver::NoiseTest noiseTest = {0.0f, 0.0f, 0.0f};
    unsigned inputs = 0;
    int classes = 2;
    dsp::Window texture = {5, 3};
    dsp::Window neighbourhood = {0, 0};  // no gates: gate by gate
    bool sector = false;
    bool nanIsNotMeasured = false;

    bool usesNeighbourhood() const { return neighbourhood.gates > 0; }
};

/* Throws Refusal when an argument is wrong. */
Request checkedRequest(const MembershipSet& set, const clutter_scan* scan,
                       const clutter_options* options);

/* A struct that begins with its size, as this library knows it. Throws Refusal when it is null,
 * smaller than its first version, or holds members that this library does not know. */
clutter_result checkedResult(const clutter_result* result, const Request& request);

}  // namespace clutter::classifier

#endif

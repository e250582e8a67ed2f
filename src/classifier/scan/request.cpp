/*
 * Checks of everything that a caller hands over, before anything is computed.
 */
#include "classifier/scan/request.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "classifier/functions/refusal.h"

namespace clutter::classifier {
namespace {

constexpr std::int64_t kMaxSide = std::int64_t{1} << 24;  // of a scan, in rays or gates
constexpr std::ptrdiff_t kMaxElements = std::numeric_limits<std::ptrdiff_t>::max() / 16;
constexpr int kMaxWindow = 4095;

/* A copy of a struct whose size the caller says; members beyond this library's must be 0. */
template <class Struct>
Struct checkedCopy(const Struct* given, const char* name) {
    const std::string text(name);
    if (given == nullptr) {
        throw Refusal(CLUTTER_INVALID_ARGUMENT, text + " is null");
    }
    std::size_t size = 0;
    std::memcpy(&size, given, sizeof size);
    if (size < sizeof(Struct)) {
        throw Refusal(CLUTTER_INVALID_ARGUMENT, text + ".size is not set");
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(given);
    if (std::any_of(bytes + sizeof(Struct), bytes + size, [](unsigned char b) { return b != 0; })) {
        throw Refusal(CLUTTER_INVALID_ARGUMENT, text + " has members that are not known here");
    }
    return *given;
}

std::ptrdiff_t checkedStride(std::ptrdiff_t stride, const Request& request) {
    if (stride == 0) {
        return request.gates;
    }
    require(stride >= request.gates, "a stride is smaller than a ray");
    if (stride > kMaxElements / request.rays) {
        throw Refusal(CLUTTER_TOO_LARGE, "a stride is too large");
    }
    return stride;
}

FieldView checkedField(const clutter_field& field, const Request& request) {
    if (field.values == nullptr) {
        return {};
    }
    require(field.type == CLUTTER_FLOAT || field.type == CLUTTER_DOUBLE,
            "the type of a field is not known");
    return {field.values, checkedStride(field.stride, request), field.type == CLUTTER_DOUBLE};
}

void takeSizes(const clutter_scan& scan, Request& request) {
    require(scan.rays >= 1 && scan.gates >= 1, "rays and gates must be at least 1");
    if (scan.rays > kMaxSide || scan.gates > kMaxSide) {
        throw Refusal(CLUTTER_TOO_LARGE, "more than 2^24 rays or gates");
    }
    request.rays = static_cast<int>(scan.rays);
    request.gates = static_cast<int>(scan.gates);
}

void takeFields(const clutter_scan& scan, Request& request) {
    const clutter_field* const fields[] = {&scan.zhh,        &scan.zdr,      &scan.phidp,
                                           &scan.rhohv,      &scan.velocity, &scan.ldr,
                                           &scan.likelihood, &scan.width};
    static_assert(std::size(fields) == fuzzy::kFieldCount);
    for (std::size_t f = 0; f < std::size(fields); ++f) {
        request.fields[f] = checkedField(*fields[f], request);
    }
    request.snr = checkedField(scan.snr, request);
}

/* The source of the noise flags, and its parameters. */
void takeNoise(const clutter_scan& scan, Request& request) {
    request.noise = scan.noise;
    if (scan.noise != nullptr) {
        request.noiseStride = checkedStride(scan.noise_stride, request);
        return;
    }
    require(!std::isnan(scan.min_snr_db), "min_snr_db is not a number");
    request.noiseTest.minSnrDb = static_cast<float>(scan.min_snr_db);
    if (request.snr.values != nullptr) {
        return;
    }
    require(request.fields[fuzzy::kFieldZhh].values != nullptr,
            "noise needs zhh, snr or a mask of its own");
    require(scan.gate_spacing_m > 0.0 && std::isfinite(scan.gate_spacing_m),
            "gate_spacing_m is not positive");
    require(std::isfinite(scan.radar_constant_db), "radar_constant_db is not a number");
    request.noiseTest.gateSizeM = static_cast<float>(scan.gate_spacing_m);
    request.noiseTest.radarConstantDb = static_cast<float>(scan.radar_constant_db);
}

/* The inputs that were read and whose field is given. */
unsigned availableInputs(const MembershipSet& set, const Request& request) {
    unsigned available = 0;
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        const bool given = request.fields[fuzzy::kInputs[i].field].values != nullptr;
        if (given && (set.inputs() & (1u << i)) != 0) {
            available |= 1u << i;
        }
    }
    return available;
}

void takeInputs(const MembershipSet& set, std::uint32_t wanted, Request& request) {
    request.inputs = availableInputs(set, request);
    if (wanted != 0) {
        require((wanted & ~static_cast<std::uint32_t>(CLUTTER_ALL_INPUTS)) == 0,
                "inputs has bits that are not inputs");
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            if ((wanted & ~request.inputs & (1u << i)) == 0) {
                continue;
            }
            const bool read = (set.inputs() & (1u << i)) != 0;
            throw Refusal(CLUTTER_INVALID_ARGUMENT, std::string("input ") + fuzzy::kInputs[i].name +
                                                        (read ? ": its field is not given"
                                                              : ": its functions were not read"));
        }
        request.inputs = wanted;
    }
    require(request.inputs != 0, "no field of any input is given");
}

bool isOdd(int size) {
    return size > 0 && size % 2 == 1;
}

void takeWindows(const clutter_options& options, Request& request) {
    if (options.texture_gates != 0 || options.texture_rays != 0) {
        request.texture = {options.texture_gates, options.texture_rays};
        require(dsp::isTextureWindow(request.texture) && request.texture.gates <= kMaxWindow &&
                    request.texture.rays <= kMaxWindow,
                "the texture's window is not odd, or of one gate only");
    }
    const dsp::Window neighbourhood = {options.neighbourhood_gates, options.neighbourhood_rays};
    if (neighbourhood.gates == 0 && neighbourhood.rays == 0) {
        return;
    }
    require(isOdd(neighbourhood.gates) && isOdd(neighbourhood.rays) &&
                neighbourhood.gates <= CLUTTER_MAX_NEIGHBOURHOOD &&
                neighbourhood.rays <= CLUTTER_MAX_NEIGHBOURHOOD,
            "the neighbourhood is not odd, or too large");
    request.neighbourhood = neighbourhood;
}

}  // namespace

Request checkedRequest(const MembershipSet& set, const clutter_scan* scan,
                       const clutter_options* options) {
    clutter_options chosen = {};
    if (options != nullptr) {
        chosen = checkedCopy(options, "options");
    }
    const clutter_scan given = checkedCopy(scan, "scan");
    Request request;
    takeSizes(given, request);
    takeFields(given, request);
    takeNoise(given, request);
    takeInputs(set, chosen.inputs, request);
    takeWindows(chosen, request);
    request.sector = chosen.sector != 0;
    request.nanIsNotMeasured = chosen.nan_is_not_measured != 0;
    if (chosen.all_clutter != 0) {
        require(set.classes() == kMaxClasses,
                "all_clutter: the functions of sea clutter and wind turbines were not read");
        request.classes = kMaxClasses;
    }
    const int apart = request.sector ? request.texture.rays / 2 : 0;
    request.shape = {request.gates, request.rays + apart};
    return request;
}

clutter_result checkedResult(const clutter_result* result, const Request& request) {
    clutter_result wanted = checkedCopy(result, "result");
    wanted.stride = checkedStride(wanted.stride, request);
    return wanted;
}

}  // namespace clutter::classifier

#include "scan/classes/classify_sweep.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/classes/all_clutter.h"
#include "scan/classes/membership_files.h"
#include "scan/process/fill_context.h"

namespace scan {
namespace {

constexpr int kDefaultMask = 255; /* all but the spectrum width */

struct Input {
    int bit;
    const char* name;
    Role role;
};

constexpr Input kInputs[] = {
    {1, "zhh-texture", Role::kZhh}, {2, "zdr-texture", Role::kZdr}, {4, "pdp-texture", Role::kPdp},
    {8, "rhv-texture", Role::kRhv}, {16, "vel", Role::kVel},        {32, "ldr", Role::kLdr},
    {64, "pdf", Role::kPdf},        {128, "rhv", Role::kRhv},       {256, "wid", Role::kWid},
};
constexpr int kTextures = 15;
constexpr int kVelocity = 16;
constexpr int kAllInputs = 511;

void settleCalibration(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
                       ClassifiedSweep& result) {
    Calibration& calibration = result.calibration;
    calibration.minSnrDb = kEchoSnrDb;
    if (options.radarConstantDb) {
        result.source = ConstantSource::kUser;
        calibration.radarConstantDb = *options.radarConstantDb;
    } else if (scan.hasRadarConstant) {
        result.source = ConstantSource::kFile;
        calibration.radarConstantDb = scan.radarConstantDb;
    } else {
        result.source = ConstantSource::kEstimate;
        const Field* rhv = result.fields[Role::kRhv];
        calibration = estimateCalibration(result.fields[Role::kZhh]->values,
                                          rhv ? rhv->values : std::vector<float>(), sweep.nrays,
                                          sweep.ngates, sweep.gateSpacingM);
    }
    if (options.minSnrDb) calibration.minSnrDb = *options.minSnrDb;
}

/* The inputs that were asked for and exist. */
int settleMask(const Sweep& sweep, const ClassifyOptions& options, ClassifiedSweep& result) {
    int wanted = options.mask.value_or(kDefaultMask);
    if (!options.mask && isVelocityFiltered(sweep, result.fields, options.map)) {
        wanted &= ~kVelocity;
        result.notes.push_back("vel is left out: " + result.fields[Role::kVel]->name +
                               " seems to come from behind the clutter filter (name it with "
                               "--inputs or --map to use it)");
    }
    std::string absent;
    int mask = 0;
    for (const Input& input : kInputs) {
        if (!(wanted & input.bit)) continue;
        if (result.fields[input.role])
            mask |= input.bit;
        else
            absent += std::string(" ") + input.name;
    }
    if (mask == 0) throw std::runtime_error("has no field for any of the inputs" + absent);
    if (options.mask && !absent.empty())
        result.notes.push_back("asked for, but not in the file:" + absent);
    return mask;
}

void checkSweep(const Sweep& sweep, const FieldChoice& fields) {
    if (!(sweep.gateSpacingM > 0)) throw std::runtime_error("the gate spacing is not positive");
    if (!fields[Role::kZhh])
        throw std::runtime_error(
            "no reflectivity field is known or usable: name it with --map "
            "FIELD=zhh");
}

void runStage(Crres& context, const ClassifyOptions& options, ClassifiedSweep& result) {
    const auto begin = std::chrono::steady_clock::now();
    context.PrecipitationClutterClassification(static_cast<short>(result.mask));
    if (options.allClasses) tellClutterApart(context, result.mask);
    if (options.removeIsolated) context.RemoveIsolatedPixels();
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

void takeClasses(const Sweep& sweep, const Crres& context, ClassifiedSweep& result) {
    const Field& reflectivity = *result.fields[Role::kZhh];
    const auto ngates = static_cast<size_t>(sweep.ngates);
    result.classes.assign(context.ccl.data, context.ccl.data + reflectivity.values.size());
    for (size_t i = 0; i < result.classes.size(); ++i) {
        const size_t ray = i / ngates;
        if (!sweep.rayGates.empty() && static_cast<int>(i % ngates) >= sweep.rayGates[ray]) {
            result.classes[i] = std::numeric_limits<float>::quiet_NaN();
            continue;
        }
        result.precipitation += result.classes[i] == kPrecipitation;
        result.groundClutter += result.classes[i] == kGroundClutter;
        result.seaClutter += result.classes[i] == kSeaClutter;
        result.turbineClutter += result.classes[i] == kTurbineClutter;
        result.noise += result.classes[i] == kNoise;
        result.withoutValue += isMissing(Role::kZhh, reflectivity.values[i]);
    }
}

ClassifiedSweep prepareSweep(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options) {
    ClassifiedSweep result;
    result.fields = chooseFields(sweep, options.map);
    checkSweep(sweep, result.fields);
    result.mask = settleMask(sweep, options, result);
    for (int i = 0; i < kRoleCount; ++i) {
        const std::string& note = result.fields.notes[i];
        if (!note.empty() && takesPart(static_cast<Role>(i), options.mask.value_or(kDefaultMask)))
            result.notes.push_back(note);
    }
    requireMembershipFiles(options.membership, result.mask, options.allClasses);
    settleCalibration(scan, sweep, options, result);
    return result;
}

ClassifiedSweep classifySweep(const Scan& scan, const Sweep& sweep,
                              const ClassifyOptions& options) {
    ClassifiedSweep result = prepareSweep(scan, sweep, options);
    const auto context = std::make_unique<Crres>();
    const int reach =
        std::max(options.textureRays / 2, options.removeIsolated ? kIsolatedReach : 0);
    fillContext(sweep, result.fields, reach, *context);
    context->zhh.radarconst = static_cast<float>(result.calibration.radarConstantDb);
    context->minsnr = static_cast<float>(result.calibration.minSnrDb);
    context->texgates = options.textureGates;
    context->texrays = options.textureRays;
    std::memcpy(context->mfdir, options.membership.c_str(), options.membership.size() + 1);
    runStage(*context, options, result);
    takeClasses(sweep, *context, result);
    return result;
}

bool takesPart(Role role, int mask) {
    return role == Role::kZhh ||
           std::any_of(std::begin(kInputs), std::end(kInputs), [&](const Input& input) {
               return input.role == role && (mask & input.bit);
           });
}

int parseInputs(const std::string& text) {
    int mask = 0;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(',', begin), text.size());
        std::string name = lowerCase(text.substr(begin, end - begin));
        begin = end + 1;
        if (name.rfind("phidp", 0) == 0) name.replace(0, 5, "pdp");
        if (name.rfind("rhohv", 0) == 0) name.replace(0, 5, "rhv");
        const auto* found = std::find_if(std::begin(kInputs), std::end(kInputs),
                                         [&](const Input& input) { return name == input.name; });
        if (name == "all")
            mask |= kAllInputs;
        else if (name == "textures")
            mask |= kTextures;
        else if (found != std::end(kInputs))
            mask |= found->bit;
        else
            throw std::invalid_argument("no such input: " + name +
                                        " (zhh-texture zdr-texture pdp-texture rhv-texture vel ldr "
                                        "pdf rhv wid textures all)");
    }
    return mask;
}

std::string describeInputs(int mask) {
    std::string textures;
    std::string values;
    for (const Input& input : kInputs) {
        if (!(mask & input.bit)) continue;
        std::string& list = (input.bit & kTextures) ? textures : values;
        list += std::string(list.empty() ? "" : " ") + roleInfo(input.role).key;
    }
    if (textures.empty()) return values;
    return "textures of " + textures + (values.empty() ? "" : "; " + values);
}

}  // namespace scan

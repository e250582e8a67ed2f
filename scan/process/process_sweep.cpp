#include "scan/process/process_sweep.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/process/fill_context.h"
#include "scan/process/fill_phase.h"

namespace scan {
namespace {

constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

/* What comes out: the record's name, its name and scale in Universal Format, and the stages of
 * which one must have run. */
constexpr struct {
    Cpluvek Crres::*record;
    const char* name;
    const char* ufName;
    const char* units;
    int wordsPerUnit;
    int stages; /* 0: a field of the input */
} kResults[] = {
    {&Crres::zhh, "Zh", "DZ", "dBZ", 100, 0},
    {&Crres::zdr, "Zdr", "DR", "dB", 100, 0},
    {&Crres::pdp, "Phidp", "PH", "deg", 50, 0},
    {&Crres::rhv, "RhoHV", "RH", "-", 10000, 0},
    {&Crres::vel, "V", "VR", "m/s", 100, 0},
    {&Crres::wid, "W", "SW", "m/s", 100, 0},
    {&Crres::ldr, "LDR", "LD", "dB", 100, 0},
    {&Crres::rain, "R", "RR", "mm/h", 20, kRainStage | kReflectivityToRainStage},
    {&Crres::snr, "SNR", "SN", "dB", 100, kClassifyStage},
    {&Crres::dpdp, "Dpdp", "TP", "deg", 50, kAttenuationStage},
    {&Crres::acoef, "a", nullptr, "-", 1, kAttenuationStage},
    {&Crres::bcoef, "b", "BE", "-", 10000, kAttenuationStage},
    {&Crres::alpha, "alpha", "AL", "-", 10000, kAttenuationStage},
    {&Crres::ta, "TA", "TA", "dB", 100, kAttenuationStage},
    {&Crres::pdpc, "PdpC", "PC", "deg", 50, kAttenuationStage},
    {&Crres::ah, "Ah", "AH", "dB/km", 1000, kAttenuationStage},
};

const Field* findClassField(const Sweep& sweep) {
    const auto found = std::find_if(sweep.fields.begin(), sweep.fields.end(), isClassField);
    return found == sweep.fields.end() ? nullptr : &*found;
}

/* Without classification the fields are all there is to settle. */
ClassifiedSweep chooseOnly(const Sweep& sweep, const ProcessOptions& options) {
    ClassifiedSweep result;
    result.fields = chooseFields(sweep, options.classify.map);
    if (!(sweep.gateSpacingM > 0)) throw std::runtime_error("the gate spacing is not positive");
    if (!result.fields[Role::kZhh])
        throw std::runtime_error(
            "no reflectivity field is known or usable: name it with --map FIELD=zhh");
    return result;
}

/* The relation has its inputs: the stage hands on no specific differential phase. */
bool canEstimateRain(int relation, const FieldChoice& fields) {
    return relation == 0 ||
           ((relation < 0 || relation == 1 || relation == 4) && fields[Role::kZdr]);
}

class Chain {
  public:
    Chain(const Scan& scan, const Sweep& sweep, const ProcessOptions& options)
        : scan_(scan), sweep_(sweep), options_(options), context_(new Crres) {}

    ProcessedSweep run() {
        readSettings();
        settle();
        fill();
        const auto begin = std::chrono::steady_clock::now();
        process();
        out_.classified.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        if (out_.hasClasses) takeOutClasses();
        takeFields();
        out_.context = std::move(context_);
        return std::move(out_);
    }

  private:
    void readSettings() {
        std::string file = options_.configuration;
        if (!file.empty()) context_->readinitialconfiguration(file.data());
        if (options_.freezingLevelM)
            context_->freezinglevel = static_cast<float>(*options_.freezingLevelM);
        out_.freezingLevelM = context_->freezinglevel;
    }

    void settle() {
        out_.what = options_.what;
        const bool classifies = (out_.what & kClassifyStage) != 0;
        classField_ = classifies ? nullptr : findClassField(sweep_);
        out_.hasClasses = classifies || classField_;
        out_.classified = classifies ? prepareSweep(scan_, sweep_, options_.classify)
                                     : chooseOnly(sweep_, options_);
        const FieldChoice& fields = out_.classified.fields;
        if (!out_.hasClasses)
            leaveOut(kSmoothStage | kAttenuationStage | kBlankStage,
                     "no smoothing, attenuation or blanking: there are no classes");
        if (!fields[Role::kPdp] || !fields[Role::kRhv])
            leaveOut(kAttenuationStage, "no attenuation correction: it needs pdp and rhv");
        if (!fields[Role::kZdr]) leaveOut(kOffsetStage, "no offset of zdr: there is no zdr");
        if (!canEstimateRain(context_->rainfallalg, fields))
            leaveOut(kRainStage, "no rain rate: relation " + std::to_string(context_->rainfallalg) +
                                     " has not all of its inputs");
        if (!(out_.what & kRainStage))
            leaveOut(kRainToReflectivityStage,
                     "no reflectivity from rain rate: there is no rain rate");
    }

    void leaveOut(int stages, const std::string& note) {
        if (out_.what & stages) out_.classified.notes.push_back(note);
        out_.what &= ~stages;
    }

    /* Half of the tallest window, in rays. */
    int reach() const {
        const int rays =
            std::max({context_->rays2ave_zhh, context_->rays2ave_zdr, context_->rays2ave_pdp,
                      context_->rays2ave_rhv, context_->texrays});
        return std::max(std::min(rays / 2, sweep_.nrays), kIsolatedReach);
    }

    void fill() {
        fillContext(sweep_, out_.classified.fields, reach(), *context_);
        Crres& context = *context_;
        const auto count =
            static_cast<size_t>(context.zhh.nrays) * static_cast<size_t>(context.zhh.ngates);
        context.zhh.CopyPointerToObject(0, context.fzl);
        std::fill(context.fzl.data, context.fzl.data + count, context.freezinglevel);
        context.zhh.CopyPointerToObject(0, context.rain);
        std::fill(context.rain.data, context.rain.data + count, 0.0F);
        if (classField_) {
            fillRecord(sweep_, *classField_, Role::kNone, context.zhh.nrays, context.ccl);
            std::replace_if(
                context.ccl.data, context.ccl.data + count,
                [](float value) { return std::isnan(value); }, kNoise);
        }
        context.zhh.radarconst = static_cast<float>(out_.classified.calibration.radarConstantDb);
        context.minsnr = static_cast<float>(out_.classified.calibration.minSnrDb);
        context.clutteralg = static_cast<short>(out_.classified.mask);
        const std::string& membership = options_.classify.membership;
        std::memcpy(context.mfdir, membership.c_str(), membership.size() + 1);
    }

    /* A gap in the phase is no sign of clutter, so that it is closed only behind the
     * classification; behind that, one gap would spoil the offset of the whole scan. */
    void process() {
        if (out_.what & kClassifyStage) context_->RadarDataProcessing(kClassifyStage);
        if (context_->pdp.data) closePhaseGaps();
        context_->RadarDataProcessing(out_.what & ~kClassifyStage);
    }

    void closePhaseGaps() {
        Cpluvek& pdp = context_->pdp;
        const EmptyRays empty = fillPhaseGaps(pdp.data, pdp.nrays, sweep_.ngates);
        const auto without = std::count_if(empty.rays.begin(), empty.rays.end(),
                                           [&](int ray) { return ray < sweep_.nrays; });
        if (without == 0) return;
        char note[100];
        std::snprintf(note, sizeof note,
                      "%d rays without any phase, taken as the others begin: %.1f deg",
                      static_cast<int>(without), static_cast<double>(empty.phase));
        out_.classified.notes.push_back(note);
    }

    /* What is taken out goes back as it is, so that samples of the context hold no value either
     * where the files have none. */
    void takeOutClasses() {
        takeClasses(sweep_, *context_, out_.classified);
        const std::vector<float>& classes = out_.classified.classes;
        std::copy(classes.begin(), classes.end(), context_->ccl.data);
    }

    void takeFields() {
        out_.sweep = sweep_;
        out_.sweep.fields.clear();
        for (const auto& row : kResults) {
            Cpluvek& record = (*context_).*row.record;
            if (!record.data || (row.stages && !(out_.what & row.stages))) continue;
            Field field{row.name, row.units, {}, row.wordsPerUnit};
            field.values.assign(record.data, record.data + gates());
            clearGaps(row.record, field.values);
            std::copy(field.values.begin(), field.values.end(), record.data);
            out_.sweep.fields.push_back(std::move(field));
        }
    }

    size_t gates() const {
        return static_cast<size_t>(sweep_.nrays) * static_cast<size_t>(sweep_.ngates);
    }

    /* Back to no value: what was blanked, what the file did not have, what is beyond a ray. */
    void clearGaps(Cpluvek Crres::*record, std::vector<float>& values) const {
        const FieldChoice& fields = out_.classified.fields;
        const bool ofReflectivity =
            record == &Crres::zhh || record == &Crres::snr || record == &Crres::rain;
        const Field* source = ofReflectivity          ? fields[Role::kZhh]
                              : record == &Crres::pdp ? fields[Role::kPdp]
                                                      : nullptr;
        const Role role = ofReflectivity ? Role::kZhh : Role::kPdp;
        for (size_t i = 0; i < values.size(); ++i) {
            const bool blanked = (out_.what & kBlankStage) && values[i] == context_->invalidvalue;
            const bool missing = source && isMissing(role, source->values[i]);
            if (blanked || missing || isBeyondRay(i)) values[i] = kNoValue;
        }
    }

    bool isBeyondRay(size_t i) const {
        const auto ngates = static_cast<size_t>(sweep_.ngates);
        return !sweep_.rayGates.empty() &&
               static_cast<int>(i % ngates) >= sweep_.rayGates[i / ngates];
    }

    const Scan& scan_;
    const Sweep& sweep_;
    const ProcessOptions& options_;
    std::unique_ptr<Crres> context_;
    const Field* classField_ = nullptr;
    ProcessedSweep out_;
};

}  // namespace

ProcessedSweep processSweep(const Scan& scan, const Sweep& sweep, const ProcessOptions& options) {
    return Chain(scan, sweep, options).run();
}

const char* ufNameOf(const std::string& recordName) {
    for (const auto& row : kResults)
        if (recordName == row.name) return row.ufName;
    return nullptr;
}

}  // namespace scan

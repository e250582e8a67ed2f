/* processed_fields.cpp - the table of results, and their gaps. */
#include "scan/process/processed_fields.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/fields/missing.h"
#include "scan/process/process_options.h"
#include "scan/scan.h"

namespace scan {
namespace {

/* Results: the record's name, its name and scale in Universal Format, and the stages of which one
 * must have run. */
constexpr struct {
    Cpluvek Crres::*record;
    const char* name;
    const char* ufName;
    const char* units;
    int wordsPerUnit;
    int stages;  // 0: a field of the input
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

/* Gates past the end of a ray have no value. */
void clearPastRays(const Sweep& sweep, std::span<float> values) {
    for (std::size_t r = 0; r < sweep.rayGates.size(); ++r) {
        const auto gates = static_cast<std::ptrdiff_t>(sweep.ngates);
        const auto ray = values.begin() + static_cast<std::ptrdiff_t>(r) * gates;
        std::fill(ray + sweep.rayGates[r], ray + gates, kNoValue);
    }
}

/* The field of the file that says where a record has a value; null: everywhere. */
const Field* sourceOf(Cpluvek Crres::*record, const FieldChoice& fields, Role& role) {
    const bool ofReflectivity =
        record == &Crres::zhh || record == &Crres::snr || record == &Crres::rain;
    role = ofReflectivity ? Role::kZhh : Role::kPdp;
    return ofReflectivity || record == &Crres::pdp ? fields[role] : nullptr;
}

void clearGaps(const Sweep& sweep, const FieldChoice& fields, bool blanked, Cpluvek Crres::*record,
               float invalid, std::span<float> values) {
    Role role = Role::kNone;
    const Field* source = sourceOf(record, fields, role);
    if (blanked) {
        std::replace(values.begin(), values.end(), invalid, kNoValue);
    }
    if (source) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = isMissing(role, source->values[i]) ? kNoValue : values[i];
        }
    }
    clearPastRays(sweep, values);
}

}  // namespace

std::vector<Field> takeFields(const Sweep& sweep, const FieldChoice& source, int what,
                              Crres& context) {
    const std::size_t gates =
        static_cast<std::size_t>(sweep.nrays) * static_cast<std::size_t>(sweep.ngates);
    const bool blanked = (what & kBlankStage) != 0;
    std::vector<Field> fields;
    for (const auto& row : kResults) {
        Cpluvek& record = context.*row.record;
        if (!record.data || (row.stages && !(what & row.stages))) {
            continue;
        }
        const std::span<float> values(record.data, gates);
        clearGaps(sweep, source, blanked, row.record, context.invalidvalue, values);
        fields.push_back({row.name, row.units, {values.begin(), values.end()}, row.wordsPerUnit});
    }
    return fields;
}

const char* ufNameOf(const std::string& recordName) {
    for (const auto& row : kResults) {
        if (recordName == row.name) {
            return row.ufName;
        }
    }
    return nullptr;
}

}  // namespace scan

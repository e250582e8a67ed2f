/* write_polar.cpp - a field record and its layer, checked for the words of a polar data file. */
#include "scan/formats/polar/write_polar.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "formats/polar/layout.h"
#include "scan/angles.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/writing/checked_words.h"
#include "scan/text.h"

namespace scan {
namespace {

namespace layout = clutter::formats;

constexpr double kMaxWord = 65535;  // the words of the header have no sign

/* Values of a record outside these ends would wrap; they become 0, which is "unknown". */
void checkHeader(Cpluvek& record, CheckedWords& checked) {
    const struct {
        const char* what;
        float& value;
        double shown, highest;
    } kWords[] = {
        {"longitude", record.longitude, record.longitude, 360},
        {"latitude", record.latitude, record.latitude, 90},
        {"height", record.altitude, record.altitude, kMaxWord},
        {"radar constant", record.radarconst, record.radarconst, kMaxWord / 10},
        {"wavelength", record.wavelength, record.wavelength, kMaxWord / 1000},
        {"beam width", record.beamwidth, record.beamwidth * kDegreesPerRadian, kMaxWord / 100},
        {"pulse length", record.pulsedepth, record.pulsedepth, kMaxWord},
        {"rate of turn", record.rpm, record.rpm, kMaxWord / 360},
        {"number of pulses", record.nsamples, record.nsamples, kMaxWord},
        {"pulse repetition", record.prf, record.prf, kMaxWord},
        {"Nyquist velocity", record.nyquist, record.nyquist, kMaxWord / 100},
    };
    for (const auto& word : kWords) {
        if (!checked.allows(word.what, word.shown, 0, word.highest)) {
            word.value = 0;
        }
    }
}

[[noreturn]] void refuse(const CheckedWords& checked) {
    std::string sentence = checked.notes().front();
    throw std::runtime_error(sentence.substr(0, sentence.rfind(':')));
}

/* Without these the values would lie elsewhere. */
void requireGeometry(const Sweep& sweep) {
    CheckedWords checked("a polar data file");
    bool good = checked.allows("number of rays", sweep.nrays, 1, 32767) &&
                checked.allows("number of gates", sweep.ngates, 1, 32767) &&
                checked.allows("gate spacing", sweep.gateSpacingM, 1, kMaxWord) &&
                checked.allows("first gate's range", sweep.firstGateM, 0, kMaxWord);
    for (const double azimuth : sweep.azimuthDeg) {
        good = good && checked.allows("azimuth", azimuth, -0.005, 655);
    }
    if (!good) {
        refuse(checked);
    }
}

struct Ends {
    double lowest, highest;
};

template <class Stored>
constexpr Ends endsOf() {
    using Limits = std::numeric_limits<Stored>;
    return {static_cast<double>(Limits::lowest()), static_cast<double>(Limits::max())};
}

Ends endsOf(layout::Storage storage) {
    switch (storage) {
        case layout::Storage::kUint8:
            return endsOf<std::uint8_t>();
        case layout::Storage::kUint16:
            return endsOf<std::uint16_t>();
        case layout::Storage::kInt16:
            return endsOf<std::int16_t>();
        case layout::Storage::kInt32:
            return endsOf<std::int32_t>();
        case layout::Storage::kUint32:
            return endsOf<std::uint32_t>();
        case layout::Storage::kFloat32:
            break;
    }
    return endsOf<float>();
}

/* Whether the layer shows a gate: a value that is there, and that a product can hold. */
std::vector<float> layerOf(const Field& field, int product, CheckedWords& checked) {
    const layout::SingleParameterProduct* known = layout::findSingleParameter(product);
    const Ends ends = endsOf(known ? known->storage : layout::Storage::kFloat32);
    std::vector<float> present(field.values.size());
    std::size_t outside = 0;
    for (std::size_t i = 0; i < present.size(); ++i) {
        const auto value = static_cast<double>(field.values[i]);
        const bool fits = value >= ends.lowest && value <= ends.highest;
        outside += !std::isnan(value) && !fits;
        present[i] = fits ? 1 : 0;
    }
    if (outside > 0) {
        checked.note("product " + std::to_string(product) + " cannot hold " +
                     std::to_string(outside) + " values of " + printable(field.name) +
                     ": the layer leaves them out");
    }
    return present;
}

}  // namespace

std::vector<int> singleParameterProducts() {
    std::vector<int> codes;
    std::transform(std::begin(layout::kSingleParameterProducts),
                   std::end(layout::kSingleParameterProducts), std::back_inserter(codes),
                   [](const layout::SingleParameterProduct& product) { return product.code; });
    return codes;
}

std::vector<std::string> writePolarData(const OutputFile& file, const Scan& scan,
                                        const Sweep& sweep, const Field& field, int product) {
    requireGeometry(sweep);
    CheckedWords checked("a polar data file");
    if (sweep.rhi) {
        checked.note(lostElevationsNote("a polar data file"));
    }
    Cpluvek values;
    fillFieldRecord(scan, sweep, field.name, field.units, field.values, values);
    values.radarid = static_cast<short>(product);
    values.radarconst = scan.hasRadarConstant ? static_cast<float>(scan.radarConstantDb) : 0.0f;
    checkHeader(values, checked);
    Cpluvek layer;
    fillFieldRecord(scan, sweep, "layer", "", layerOf(field, product, checked), layer);
    CThuPolDaFor polar;
    requireWritten(file, [&] {
        return polar.WriteSingleParameterData(file.temporary().c_str(), &values, &layer) == 1;
    });
    return checked.notes();
}

}  // namespace scan

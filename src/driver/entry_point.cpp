/*
 * The entry point, and the import of one field into a record.
 */
#include <algorithm>
#include <cstddef>
#include <exception>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "base/array.h"
#include "base/message.h"
#include "base/number.h"
#include "base/text.h"
#include "clutterclassifier/clutterclassifier.h"
#include "driver/gate_kernels.h"
#include "driver/scan_classifier.h"
#include "driver/scan_import.h"
#include "driver/scan_inputs.h"
#include "dsp/windows/row_source.h"

using namespace clutter;
using namespace clutter::driver;

namespace {

/* The context's defaults, which the entry point does not change. */
constexpr dsp::Window kTextureWindow{5, 3};

float gateSpacing(const double* ranges) {
    return static_cast<float>(base::truncateToInt(ranges[1] - ranges[0]));
}

/* The directory as the context's setting holds it: a longer text is cut there, and is then too long
 * for any file name to be formed from it. */
std::string directoryOf(const char* mfdir) {
    char directory[sizeof(Crres::mfdir)];
    base::copyText(directory, mfdir);
    return directory;
}

constexpr int kFields = 7;

/* The arguments that the classification needs. */
struct Call {
    const char* directory;
    dsp::PolarShape shape;
    const double* fields[kFields];  // zhh, zdr, phidp, rhohv, velocity, ldr, pdf
    const double* ranges;
    const double* params;
    double* output;

    std::size_t cells() const { return base::cellCount(shape.ngates, shape.nrays); }
};

/* Whether two arrays of n doubles share memory. */
bool overlap(const double* a, const double* b, std::size_t n) {
    const std::less<const double*> before;
    return a != nullptr && before(a, b + n) && before(b, a + n);
}

/* Rays are read again after they were classified: an output over an input waits for the last. */
bool mustWait(const Call& call) {
    return std::any_of(std::begin(call.fields), std::end(call.fields), [&](const double* field) {
        return overlap(field, call.output, call.cells());
    });
}

void classifyScan(const Call& call) {
    const dsp::PolarShape shape = call.shape;
    std::vector<NarrowedRows> rows;
    rows.reserve(kFields);
    for (const double* field : call.fields) {
        rows.emplace_back(field, shape);
    }
    const ScanFields fields{rows[0].orNull(), rows[1].orNull(), rows[2].orNull(), rows[3].orNull(),
                            rows[4].orNull(), rows[5].orNull(), rows[6].orNull(), nullptr};
    NoiseFlags noise(shape);
    const std::size_t echoes =
        noise.flag(rows[0], {gateSpacing(call.ranges), static_cast<float>(call.params[0]),
                             static_cast<float>(call.params[1])});
    const auto wanted = static_cast<unsigned short>(base::truncateToInt(call.params[2]));
    ScanInputs inputs(fields, wanted, noise, shape, kTextureWindow);
    const auto rules = readRules(directoryOf(call.directory), inputs.present(), echoes);
    std::optional<ScanClassifier> classifier;
    if (rules) {
        classifier.emplace(inputs, *rules);
    }

    std::vector<double> held(mustWait(call) ? call.cells() : 0);
    double* const target = held.empty() ? call.output : held.data();
    std::vector<float> classes(static_cast<std::size_t>(shape.ngates));
    for (int r = 0; r < shape.nrays; ++r) {
        if (classifier) {
            classifier->classifyRay(r, classes.data());
        }
        widen(classifier ? classes.data() : noise.row(r), target + shape.offset(r), shape.ngates);
    }
    std::copy(held.begin(), held.end(), call.output);
}

}  // namespace

void copydata(double* src, double* ranges, double* azimuths, double* elevation, Cpluvek* rec,
              int nrays, int ngates, double* params) {
    if (src == nullptr || rec == nullptr) {
        return;
    }
    if (nrays < 0) {
        nrays = 0;
    }
    if (ngates < 0) {
        ngates = 0;
    }
    // Freed first: records of scans in a row then meet the same memory again.
    base::release(rec->angles);
    base::release(rec->data);
    rec->data = new float[base::cellCount(ngates, nrays)];
    rec->angles = new float[static_cast<std::size_t>(nrays) + 1];
    rec->ngates = ngates;
    rec->nrays = nrays;
    rec->gatesize = gateSpacing(ranges);
    rec->coordtype = 0;
    rec->radarconst = static_cast<float>(params[0]);
    rec->minsnr = static_cast<float>(params[1]);
    rec->nrecords = 1;
    rec->nsets = 1;
    for (int r = 0; r < nrays; ++r) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * ngates;
        driver::narrow(src + at, rec->data + at, ngates);
    }
    rec->angles[0] = static_cast<float>(elevation[0]);
    driver::narrow(azimuths, rec->angles + 1, nrays);
}

void clutterclassifier(const char* mfdir, int nrays, int ngates, double* zhh, double* zdr,
                       double* phidp, double* rhohv, double* velocity, double* ldr, double* pdf,
                       double* ranges, double* azimuths, double* elevation, double* params,
                       double* output) {
    (void)azimuths;  // part of a record, not of the classification
    (void)elevation;
    if (nrays < 1 || ngates < 1) {
        base::report("nrays and ngates should be positive!\n");
        return;
    }
    if (zhh == nullptr) {
        return;
    }
    try {
        classifyScan({mfdir,
                      {ngates, nrays},
                      {zhh, zdr, phidp, rhohv, velocity, ldr, pdf},
                      ranges,
                      params,
                      output});
    } catch (const std::exception&) {
        // Not enough memory. Nothing has been written: every allocation comes before the first ray.
    }
}

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
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
#include "dsp/windows/row_source.h"

using namespace clutter;
using namespace clutter::driver;

namespace {

/* The context's defaults, which the entry point does not change. */
constexpr dsp::Window kTextureWindow{5, 3};

float gateSpacing(const double* ranges) {
    return static_cast<float>(base::truncateToInt(ranges[1] - ranges[0]));
}

/* What the context's directory setting would hold: a longer text is cut there, and then too long
 * for any file name to be formed from it. */
std::string directoryOf(const char* mfdir) {
    char directory[sizeof(Crres::mfdir)];
    base::copyText(directory, mfdir);
    return directory;
}

/* Whether two arrays of n doubles share memory. */
bool overlap(const double* a, const double* b, std::size_t n) {
    const std::less<const double*> before;
    return a != nullptr && before(a, b + n) && before(b, a + n);
}

}  // namespace

void copydata(double* src, double* ranges, double* azimuths, double* elevation, Cpluvek* rec,
              int nrays, int ngates, double* params) {
    if (src == nullptr || rec == nullptr) return;
    if (nrays < 0) nrays = 0;
    if (ngates < 0) ngates = 0;
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
    if (zhh == nullptr) return;
    const dsp::PolarShape shape{ngates, nrays};
    NarrowedRows rows[] = {{zhh, shape},      {zdr, shape}, {phidp, shape}, {rhohv, shape},
                           {velocity, shape}, {ldr, shape}, {pdf, shape}};
    const ScanFields fields{rows[0].orNull(), rows[1].orNull(), rows[2].orNull(), rows[3].orNull(),
                            rows[4].orNull(), rows[5].orNull(), rows[6].orNull(), nullptr};
    NoiseFlags noise(shape);
    const std::size_t echoes = noise.flag(
        rows[0],
        {gateSpacing(ranges), static_cast<float>(params[0]), static_cast<float>(params[1])});
    const short mask = static_cast<short>(base::truncateToInt(params[2]));
    ScanClassifier classifier(fields, mask, noise, shape, kTextureWindow);
    const bool classified = classifier.prepare(directoryOf(mfdir), echoes);
    // Rays are read again after they were classified: an output over an input waits for the last.
    const std::size_t cells = base::cellCount(ngates, nrays);
    const double* const inputs[] = {zhh, zdr, phidp, rhohv, velocity, ldr, pdf};
    const bool waits = std::any_of(std::begin(inputs), std::end(inputs), [&](const double* input) {
        return overlap(input, output, cells);
    });
    std::vector<double> held(waits ? cells : 0);
    double* const target = waits ? held.data() : output;
    std::vector<float> classes(static_cast<std::size_t>(ngates));
    for (int r = 0; r < nrays; ++r) {
        if (classified) classifier.classifyRay(r, classes.data());
        widen(classified ? classes.data() : noise.row(r), target + shape.offset(r), ngates);
    }
    std::copy(held.begin(), held.end(), output);
}

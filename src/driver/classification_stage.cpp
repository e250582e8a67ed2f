/*
 * The classification stage of the processing context: signal-to-noise ratio, noise flags, textures,
 * fuzzy verdicts, isolated pixels.
 */
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "base/array.h"
#include "base/files/file.h"
#include "base/number.h"
#include "base/text.h"
#include "clutterclassifier/Crres.h"
#include "driver/echo_class.h"
#include "driver/gate_kernels.h"
#include "driver/scan_classifier.h"
#include "driver/scan_inputs.h"
#include "dsp/windows/row_source.h"
#include "model/field_access.h"

using namespace clutter;
using namespace clutter::driver;
using namespace clutter::model;

namespace {

/* The context's fields as rows; a record with fewer values than the scan is absent. */
class RecordRows {
  public:
    RecordRows(const Crres& context, std::size_t cellsOfScan)
        : shape_{context.zhh.ngates, context.zhh.nrays}, cells_(cellsOfScan) {
        fields_ = {add(context.zhh), add(context.zdr), add(context.pdp), add(context.rhv),
                   add(context.vel), add(context.ldr), add(context.pdf), add(context.wid)};
    }

    dsp::PolarShape shape() const { return shape_; }
    const ScanFields& fields() const { return fields_; }

  private:
    dsp::RowSource* add(const Cpluvek& record) {
        const float* values = valuesOf(record, cells_);
        if (values == nullptr) {
            return nullptr;
        }
        rows_.push_back(std::make_unique<dsp::FieldRows>(values, shape_));
        return rows_.back().get();
    }

    dsp::PolarShape shape_;
    std::size_t cells_;
    std::vector<std::unique_ptr<dsp::FieldRows>> rows_;
    ScanFields fields_ = {};
};

/* Gates flagged by a finder become ground clutter. */
void turnIntoClutter(const Cpluvek& flags, Cpluvek& classes, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        if (!(flags.data[i] == 0.0f)) {
            classes.data[i] = kGroundClutterClass;
        }
    }
}

}  // namespace

void Crres::PrecipitationClutterClassification(short mask) {
    const std::size_t n = cells(zhh);
    if (zhh.data == nullptr || n == 0) {
        return;
    }
    copyField(zhh, ccl, "CCl", "-");
    computeSNR();
    classifyNoisewithSNR();

    std::size_t echoes = 0;
    forEachRay(zhh, [&](std::ptrdiff_t at, int count) {
        echoes += static_cast<std::size_t>(countEchoes(ccl.data + at, count));
    });
    RecordRows rows(*this, n);
    dsp::FieldRows noise(ccl.data, rows.shape());
    ScanInputs inputs(rows.fields(), static_cast<unsigned short>(mask), noise, rows.shape(),
                      {texgates, texrays});
    const auto rules = readRules({mfdir, strnlen(mfdir, sizeof mfdir)}, inputs.present(), echoes);
    if (!rules) {
        return;
    }
    ScanClassifier classifier(inputs, *rules);

    // The noise flags stay the mask of every ray's texture: verdicts go to a new array.
    std::unique_ptr<float[]> classes(new float[n]);
    for (int r = 0; r < zhh.nrays; ++r) {
        classifier.classifyRay(r, classes.get() + rows.shape().offset(r));
    }
    base::adopt(ccl.data, std::move(classes));
}

void Crres::computeSNR() {
    if (zhh.data == nullptr) {
        return;
    }
    copyField(zhh, snr, "SNR", "dB");
    if (cells(zhh) == 0) {
        return;
    }
    const std::vector<float> losses = rangeLossesDb(zhh.ngates, zhh.gatesize);
    forEachRay(zhh, [&](std::ptrdiff_t at, int count) {
        signalToNoise(zhh.data + at, losses.data(), zhh.radarconst, snr.data + at, count);
    });
}

int Crres::classifyNoisewithSNR() {
    const std::size_t n = cells(zhh);
    if (zhh.data == nullptr || valuesOf(snr, n) == nullptr) {
        return 0;
    }
    if (valuesOf(ccl, n) == nullptr) {
        copyField(zhh, ccl, "CCl", "-");
    }
    if (n == 0) {
        return 1;
    }
    forEachRay(zhh, [&](std::ptrdiff_t at, int count) {
        markNoise(snr.data + at, minsnr, ccl.data + at, count);
    });
    return 1;
}

void Crres::RemoveIsolatedPixels() {
    const std::size_t n = cells(zhh);
    if (valuesOf(ccl, n) == nullptr) {
        return;
    }
    struct Search {
        int window;
        int most;
    };
    Cpluvek scratch;
    ccl.CopyPointerToObject(0, scratch);
    for (const Search& search : {Search{5, 1}, Search{10, 2}}) {
        radarpro.GetIsolatedPixels(ccl.data, scratch.data, zhh.ngates, zhh.nrays, search.window,
                                   search.window, search.most);
        turnIntoClutter(scratch, ccl, n);
    }
}

void Crres::ReadRangeAngleLocations(char* file, float** ranges, float** angles, int& n) {
    const auto bytes = base::readTextFile(file);
    if (!bytes || ranges == nullptr || angles == nullptr) {
        return;
    }
    std::vector<float> pairs[2];
    base::TokenReader tokens({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    for (;;) {
        const auto range = tokens.next();
        const auto angle = range ? tokens.next() : std::nullopt;
        if (!angle) {
            break;
        }
        pairs[0].push_back(base::roundToFloat(base::parseNumber(*range)));
        pairs[1].push_back(base::roundToFloat(base::parseNumber(*angle)));
    }
    if (pairs[0].empty()) {
        return;
    }
    n = static_cast<int>(pairs[0].size());
    *ranges = base::duplicate(pairs[0]).release();
    *angles = base::duplicate(pairs[1]).release();
}

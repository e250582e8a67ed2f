/* kernel_calls.cpp - which operations are called, and what of them is compared. */
#include "fuzz/kernels/kernel_calls.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "clutterclassifier/classifier.h"
#include "clutterclassifier/clutterclassifier.h"
#include "fuzz/support/input_values.h"

namespace {

using clutter::fuzz::InputValues;

/* Room for what a fuzzer learns from: a few vectors of any instruction set, and their ends. */
constexpr int kMaxGates = 70;
constexpr int kMaxRays = 6;

struct Input {
    int rays, gates;
    std::size_t cells;
    InputValues bytes;

    Input(const std::uint8_t* data, std::size_t size) : bytes(data, size) {
        rays = 1 + bytes.below(kMaxRays);
        gates = 1 + bytes.below(kMaxGates);
        cells = static_cast<std::size_t>(rays) * static_cast<std::size_t>(gates);
    }
    std::vector<float> field() { return bytes.values(cells); }
    std::vector<double> wideField() {
        const std::vector<float> values = field();
        return {values.begin(), values.end()};
    }
    /* 0, 1 or 3: masks and classes. */
    std::vector<float> classes() {
        const float codes[] = {0.0f, 1.0f, 3.0f, 0.0f};
        std::vector<float> mask(cells);
        std::generate(mask.begin(), mask.end(), [&] { return codes[bytes.below(4)]; });
        return mask;
    }
    int odd(int most) { return 1 + 2 * bytes.below((most + 1) / 2); }
};

using Results = std::vector<float>;

template <class Values>
void append(Results& results, const Values& values) {
    for (const auto value : values) {
        results.push_back(static_cast<float>(value));
    }
}

/* --- toolkit --- */

void textures(Input& in, const char*, Results& results) {
    std::vector<float> values = in.field(), mask = in.classes(), out(in.cells);
    CDSP dsp;
    dsp.GetNxNPointStd(values.data(), in.gates, in.rays, out.data(), 3);
    append(results, out);
    const int gates = in.odd(9), rays = in.odd(5);
    dsp.GetNxNPointStdWithMask(values.data(), mask.data(), in.gates, in.rays, out.data(), gates,
                               rays);
    append(results, out);
}

void smoothing(Input& in, const char*, Results& results) {
    std::vector<float> values = in.field(), mask = in.classes(), out(in.cells);
    CDSP dsp;
    const int logarithmic = in.bytes.below(2);
    const int gates = 1 + in.bytes.below(20), rays = 1 + in.bytes.below(8);
    dsp.Conv2DPPI(values.data(), out.data(), mask.data(), in.gates, in.rays, gates, rays,
                  logarithmic);
    append(results, out);
    dsp.SmoothDataMtx(values.data(), in.rays, in.gates, 1 + in.bytes.below(7));
    append(results, values);
}

void filters(Input& in, const char*, Results& results) {
    std::vector<float> values = in.field(), kernel = in.bytes.values(9), out(in.cells);
    CDSP dsp;
    dsp.conv2(values.data(), in.gates, in.rays, kernel.data(), 3, 3, out.data());
    append(results, out);
    const int n = static_cast<int>(in.cells), m = 1 + in.bytes.below(9);
    std::vector<float> correlated = values;
    dsp.conv(correlated.data(), kernel.data(), n, m);
    append(results, correlated);
    dsp.Filter(values.data(), kernel.data(), n, m);
    dsp.Derive(values.data(), n, 0.25f);
    append(results, values);
}

void sorting(Input& in, const char*, Results& results) {
    std::vector<float> values = in.field(), out(in.cells);
    std::vector<int> order(in.cells);
    CDSP().Sort(values.data(), out.data(), order.data(), static_cast<int>(in.cells));
    append(results, out);
    append(results, order);
}

void decibels(Input& in, const char*, Results& results) {
    std::vector<float> values = in.field(), out(in.cells), classes = in.classes();
    const int n = static_cast<int>(in.cells);
    Cradarpro radar;
    radar.ZdBtoZmm(values.data(), out.data(), n);
    append(results, out);
    radar.ZmmtoZdb(out.data(), out.data(), n);
    append(results, out);
    radar.GetIsolatedPixels(classes.data(), out.data(), in.gates, in.rays, 5, 5, 2);
    append(results, out);
}

/* --- classification --- */

/* A field is given two times in three. */
std::vector<double> sometimes(Input& in) {
    return in.bytes.below(3) == 0 ? std::vector<double>() : in.wideField();
}

struct Fields {
    std::vector<double> zhh, others[6];
    double ranges[2] = {125.0, 375.0};
    double elevation = 0.5;
    double params[3];
    std::vector<double> azimuths;

    explicit Fields(Input& in) : zhh(in.wideField()) {
        std::generate(std::begin(others), std::end(others), [&] { return sometimes(in); });
        params[0] = in.bytes.value();
        params[1] = in.bytes.value();
        params[2] = in.bytes.byte();
        azimuths.resize(static_cast<std::size_t>(in.rays));
    }
    double* other(std::size_t i) { return others[i].empty() ? nullptr : others[i].data(); }
};

void entryPoint(Input& in, const char* membership, Results& results) {
    Fields f(in);
    std::vector<double> out(in.cells, 77.0);
    clutterclassifier(membership, in.rays, in.gates, f.zhh.data(), f.other(0), f.other(1),
                      f.other(2), f.other(3), f.other(4), f.other(5), f.ranges, f.azimuths.data(),
                      &f.elevation, f.params, out.data());
    append(results, out);
}

clutter_field fieldOf(const double* values) {
    return {values, 0, CLUTTER_DOUBLE};
}

clutter_scan scanOf(Input& in, Fields& f) {
    clutter_scan scan = {};
    scan.size = sizeof scan;
    scan.rays = in.rays;
    scan.gates = in.gates;
    scan.zhh = fieldOf(f.zhh.data());
    clutter_field* others[] = {&scan.zdr,      &scan.phidp, &scan.rhohv,
                               &scan.velocity, &scan.ldr,   &scan.likelihood};
    for (std::size_t i = 0; i < std::size(others); ++i) {
        *others[i] = fieldOf(f.other(i));
    }
    scan.gate_spacing_m = 250;
    scan.radar_constant_db = f.params[0];
    scan.min_snr_db = f.params[1];
    return scan;
}

clutter_options optionsOf(Input& in) {
    clutter_options options = {};
    options.size = sizeof options;
    options.neighbourhood_gates = in.odd(7);
    options.neighbourhood_rays = in.odd(5);
    options.sector = in.bytes.below(2);
    options.nan_is_not_measured = in.bytes.below(2);
    options.all_clutter = in.bytes.below(2);
    return options;
}

const clutter_classifier* classifierOf(const char* membership) {
    static clutter_classifier* classifier = nullptr;
    if (classifier == nullptr) {
        clutter_create(membership, 0, CLUTTER_WITH_ALL_CLUTTER, &classifier, nullptr);
    }
    return classifier;
}

void handle(Input& in, const char* membership, Results& results) {
    Fields f(in);
    const clutter_scan scan = scanOf(in, f);
    const clutter_options options = optionsOf(in);
    std::vector<std::uint8_t> classes(in.cells, 77), deciding(in.cells, 77);
    std::vector<float> margin(in.cells, 77.0f), probability(in.cells, 77.0f);
    clutter_result result = {};
    result.size = sizeof result;
    result.classes = classes.data();
    result.deciding = deciding.data();
    result.margin = margin.data();
    result.probability = probability.data();
    results.push_back(static_cast<float>(
        clutter_classify(classifierOf(membership), &scan, &options, &result, nullptr)));
    append(results, classes);
    append(results, deciding);
    append(results, margin);
    append(results, probability);
}

/* --- corrections --- */

/* Reflectivity, phase and the others of a processing context. */
void fill(Cpluvek& record, Input& in, const std::vector<float>& values) {
    std::vector<double> wide(values.begin(), values.end());
    double ranges[] = {125.0, 375.0}, elevation = 0.01, params[] = {40.0, 0.0, 255.0};
    std::vector<double> azimuths(static_cast<std::size_t>(in.rays));
    copydata(wide.data(), ranges, azimuths.data(), &elevation, &record, in.rays, in.gates, params);
}

void attenuation(Input& in, const char*, Results& results) {
    Crres context;
    fill(context.zhh, in, in.field());
    fill(context.pdp, in, in.field());
    fill(context.rhv, in, std::vector<float>(in.cells, 0.99f));
    fill(context.fzl, in, std::vector<float>(in.cells, 3000.0f));
    fill(context.ccl, in, in.classes());
    context.attenuationalg = 3 + in.bytes.below(4);  // the others draw their trials at random
    context.AttenuationCorrection();
    for (const Cpluvek* record : {&context.zhh, &context.pdp, &context.ah, &context.ta}) {
        if (record->data != nullptr) {
            append(results, std::vector<float>(record->data, record->data + in.cells));
        }
    }
}

using Call = void (*)(Input&, const char*, Results&);
constexpr Call kCalls[] = {textures, smoothing,  filters, sorting,
                           decibels, entryPoint, handle,  attenuation};

void discard(void*, const char*) {}

}  // namespace

std::size_t clutterKernelCalls(const std::uint8_t* data, std::size_t size, const char* membership,
                               float* results, std::size_t room) {
    if (size < 1) {
        return 0;
    }
    clutter_set_message_sink(discard, nullptr);
    Input in(data + 1, size - 1);
    Results filled;
    kCalls[data[0] % std::size(kCalls)](in, membership, filled);
    clutter_set_message_sink(nullptr, nullptr);
    std::copy_n(filled.begin(), std::min(filled.size(), room), results);
    return filled.size();
}

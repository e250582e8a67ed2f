/* classify.cpp - one scan through the entry point, or through the processing context. */
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "arrays.h"
#include "clutterclassifier/clutterclassifier.h"
#include "loan.h"
#include "scan/classes/all_clutter.h"
#include "scan/classes/membership_files.h"

namespace python {
namespace {

/* Codes of the library fit a byte; anything else would be a fault of the library. */
template <typename T>
void narrow(const T* classes, size_t count, std::uint8_t* out) {
    for (size_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>(static_cast<int>(classes[i]));
}

/* Room for the classes of a scan, kept by each thread: fresh pages would cost a tenth of the work.
 */
double* scratch(size_t count) {
    thread_local std::unique_ptr<double[]> room;
    thread_local size_t size = 0;
    if (count > size) {
        size = 0;
        room.reset(new double[count]);
        size = count;
    }
    return room.get();
}

void classify(const std::string& membership, const Array<double>& zhh,
              const OptionalArray<double>& zdr, const OptionalArray<double>& phidp,
              const OptionalArray<double>& rhohv, const OptionalArray<double>& velocity,
              const OptionalArray<double>& ldr, const OptionalArray<double>& pdf, double spacing,
              double radarConstant, double minSnr, int inputs, Array<std::uint8_t>& result) {
    const Size size(zhh);
    std::uint8_t* out = result.mutable_data();
    const py::gil_scoped_release release;
    double ranges[2] = {0, spacing};
    double elevation = 0;
    double params[3] = {radarConstant, minSnr, static_cast<double>(inputs)};
    double* classes = scratch(size.gates());
    std::vector<double> azimuths(static_cast<size_t>(size.nrays));
    clutterclassifier(membership.c_str(), size.nrays, size.ngates, values(zhh), values(zdr),
                      values(phidp), values(rhohv), values(velocity), values(ldr), values(pdf),
                      ranges, azimuths.data(), &elevation, params, classes);
    narrow(classes, size.gates(), out);
}

/* For single-precision arrays, which the records take as they are, and for what the entry point has
 * no argument for: spectrum width, window, isolated pixels, all classes. */
void classifyStage(const std::string& membership, const Array<float>& zhh,
                   const OptionalArray<float>& zdr, const OptionalArray<float>& phidp,
                   const OptionalArray<float>& rhohv, const OptionalArray<float>& velocity,
                   const OptionalArray<float>& width, const OptionalArray<float>& ldr,
                   const OptionalArray<float>& pdf, double spacing, double radarConstant,
                   double minSnr, int inputs, int textureGates, int textureRays,
                   bool removeIsolated, bool allClasses, Array<std::uint8_t>& result) {
    const Size size(zhh);
    std::uint8_t* out = result.mutable_data();
    const py::gil_scoped_release release;
    const auto context = std::make_unique<Crres>();
    Loan loan(size, static_cast<float>(static_cast<int>(spacing)));
    loan.lend(zhh, context->zhh);
    loan.lend(zdr, context->zdr);
    loan.lend(phidp, context->pdp);
    loan.lend(rhohv, context->rhv);
    loan.lend(velocity, context->vel);
    loan.lend(width, context->wid);
    loan.lend(ldr, context->ldr);
    loan.lend(pdf, context->pdf);
    context->zhh.radarconst = static_cast<float>(radarConstant);
    context->minsnr = static_cast<float>(minSnr);
    context->texgates = textureGates;
    context->texrays = textureRays;
    std::memcpy(context->mfdir, membership.c_str(), membership.size() + 1);
    context->PrecipitationClutterClassification(static_cast<short>(inputs));
    if (allClasses) scan::tellClutterApart(*context, inputs);
    if (removeIsolated) context->RemoveIsolatedPixels();
    narrow(context->ccl.data, size.gates(), out);
}

}  // namespace

void bindClassify(py::module_& module) {
    module.def("membership_directory",
               [](const std::string& directory, int inputs, bool allClasses) {
                   const std::string name = scan::withSeparator(directory);
                   const py::gil_scoped_release release;
                   scan::requireMembershipFiles(name, inputs, allClasses);
                   return name;
               });
    const auto field = [](const char* name) { return py::arg(name).noconvert(); };
    module.def("classify", &classify, py::arg("membership"), field("zhh"), field("zdr"),
               field("phidp"), field("rhohv"), field("velocity"), field("ldr"), field("pdf"),
               py::arg("spacing"), py::arg("radar_constant"), py::arg("min_snr"), py::arg("inputs"),
               field("out"));
    module.def("classify_stage", &classifyStage, py::arg("membership"), field("zhh"), field("zdr"),
               field("phidp"), field("rhohv"), field("velocity"), field("width"), field("ldr"),
               field("pdf"), py::arg("spacing"), py::arg("radar_constant"), py::arg("min_snr"),
               py::arg("inputs"), py::arg("texture_gates"), py::arg("texture_rays"),
               py::arg("remove_isolated"), py::arg("all_classes"), field("out"));
}

}  // namespace python

/* remove_isolated.cpp - the library's stage, with empty rays where the scan does not close. */
#include "scan/classes/remove_isolated.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/class_codes.h"
#include "scan/fields/oddities.h"

namespace scan {
namespace {

/* Rays that the stage looks at, to either side. */
constexpr int kReach = 5;

}  // namespace

void removeIsolated(const Sweep& sweep, std::vector<float>& classes) {
    const int rays = sweep.nrays + (closesCircle(sweep) ? 0 : kReach);
    const std::size_t cells =
        static_cast<std::size_t>(rays) * static_cast<std::size_t>(sweep.ngates);
    const auto context = std::make_unique<Crres>();
    for (Cpluvek* record : {&context->zhh, &context->ccl}) {
        record->nrays = rays;
        record->ngates = sweep.ngates;
        record->angles = new float[static_cast<std::size_t>(rays) + 1]();
        record->data = new float[cells];
        std::fill(record->data, record->data + cells, kNoise);
    }
    std::copy(classes.begin(), classes.end(), context->ccl.data);
    context->RemoveIsolatedPixels();
    std::copy(context->ccl.data, context->ccl.data + classes.size(), classes.begin());
}

}  // namespace scan

/*
 * Rows of a scan, and which of its gates hold an echo.
 */
#include "classifier/scan/scan_rows.h"

#include <algorithm>

#include "base/array.h"
#include "base/kernel.h"
#include "driver/echo_class.h"
#include "driver/gate_kernels.h"

namespace clutter::classifier {
namespace {

CLUTTER_KERNEL void packStates(const float* __restrict classes, std::uint8_t* __restrict states,
                               int n) {
    for (int g = 0; g < n; ++g) {
        states[g] = classes[g] == driver::kNoiseClass ? kNoise : kEcho;
    }
}

CLUTTER_KERNEL void unpackStates(const std::uint8_t* __restrict states, float* __restrict classes,
                                 int n) {
    for (int g = 0; g < n; ++g) {
        classes[g] = states[g] == kEcho ? driver::kPrecipitationClass : driver::kNoiseClass;
    }
}

void markNotMeasured(const float* values, std::uint8_t* states, int n) {
    for (int g = 0; g < n; ++g) {
        states[g] = values[g] == values[g] ? states[g] : kNotMeasured;
    }
}

/* Gate g of measured gets 1 where a value is given. */
void markMeasured(const float* values, std::vector<std::uint8_t>& measured) {
    for (std::size_t g = 0; g < measured.size(); ++g) {
        if (values[g] == values[g]) {
            measured[g] = 1;
        }
    }
}

}  // namespace

FieldRows::FieldRows(const FieldView& field, const Request& request)
    : field_(field), rays_(request.rays) {
    if (field_.isDouble) {
        narrowed_.resize(static_cast<std::size_t>(request.gates));
    }
}

const float* FieldRows::row(int ray) {
    ray = std::min(ray, rays_ - 1);
    const std::ptrdiff_t at = ray * field_.stride;
    if (!field_.isDouble) {
        return static_cast<const float*>(field_.values) + at;
    }
    if (ray != held_) {
        driver::narrow(static_cast<const double*>(field_.values) + at, narrowed_.data(),
                       static_cast<int>(narrowed_.size()));
    }
    held_ = ray;
    return narrowed_.data();
}

ScanRows::ScanRows(const Request& request) : snr_(request.snr, request) {
    rows_.reserve(request.fields.size());
    for (const FieldView& field : request.fields) {
        rows_.emplace_back(field, request);
    }
}

driver::ScanFields ScanRows::fields() {
    driver::ScanFields fields = {};
    for (std::size_t f = 0; f < fields.size(); ++f) {
        if (rows_[f].present()) {
            fields[f] = &rows_[f];
        }
    }
    return fields;
}

GateStates::GateStates(const Request& request, ScanRows& rows)
    : shape_(request.shape),
      states_(base::cellCount(shape_.ngates, shape_.nrays), std::uint8_t{kNoise}),
      row_(static_cast<std::size_t>(shape_.ngates)) {
    findNoise(request, rows);
    if (request.nanIsNotMeasured) {
        findNotMeasured(request, rows);
    }
}

void GateStates::findNoise(const Request& request, ScanRows& rows) {
    const int n = shape_.ngates;
    if (request.noise != nullptr) {
        for (int r = 0; r < request.rays; ++r) {
            const std::uint8_t* noise = request.noise + r * request.noiseStride;
            std::transform(noise, noise + n, statesOf(r),
                           [](std::uint8_t flag) { return flag != 0 ? kNoise : kEcho; });
        }
        return;
    }
    const bool given = rows.snr().present();
    const auto losses = driver::rangeLossesDb(given ? 0 : n, request.noiseTest.gateSizeM);
    std::vector<float> ratio(static_cast<std::size_t>(n));
    for (int r = 0; r < request.rays; ++r) {
        const float* snr = ratio.data();
        if (given) {
            snr = rows.snr().row(r);
        } else {
            driver::signalToNoise(rows.field(fuzzy::kFieldZhh).row(r), losses.data(),
                                  request.noiseTest.radarConstantDb, ratio.data(), n);
        }
        driver::markNoise(snr, request.noiseTest.minSnrDb, row_.data(), n);
        packStates(row_.data(), statesOf(r), n);
    }
}

void GateStates::findNotMeasured(const Request& request, ScanRows& rows) {
    FieldRows& zhh = rows.field(fuzzy::kFieldZhh);
    if (zhh.present() || rows.snr().present()) {
        FieldRows& reference = zhh.present() ? zhh : rows.snr();
        for (int r = 0; r < request.rays; ++r) {
            markNotMeasured(reference.row(r), statesOf(r), shape_.ngates);
        }
        return;
    }
    std::vector<std::uint8_t> measured(static_cast<std::size_t>(shape_.ngates));
    for (int r = 0; r < request.rays; ++r) {
        std::fill(measured.begin(), measured.end(), std::uint8_t{0});
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            if ((request.inputs & (1u << i)) == 0) {
                continue;
            }
            markMeasured(rows.field(fuzzy::kInputs[i].field).row(r), measured);
        }
        std::uint8_t* states = statesOf(r);
        for (std::size_t g = 0; g < measured.size(); ++g) {
            if (measured[g] == 0) {
                states[g] = kNotMeasured;
            }
        }
    }
}

std::uint8_t* GateStates::statesOf(int ray) {
    return states_.data() + shape_.offset(ray);
}

const std::uint8_t* GateStates::states(int ray) const {
    return states_.data() + shape_.offset(ray);
}

const float* GateStates::row(int ray) {
    unpackStates(states(ray), row_.data(), shape_.ngates);
    return row_.data();
}

}  // namespace clutter::classifier

/*
 * The attenuation stage: offset and smoothing of the differential phase, correction of the rain in
 * every ray, diagnostic fields.
 */
#include <algorithm>
#include <cmath>
#include <vector>

#include "base/message.h"
#include "clutterclassifier/Crres.h"
#include "corrections/decibels.h"
#include "corrections/scan_geometry.h"
#include "model/field_access.h"

using namespace clutter::corrections;
using clutter::model::cells;
using clutter::model::copyField;
using clutter::model::forEachRay;
using clutter::model::holdAll;

namespace {

constexpr int kOffsetGates = 10;  // in a row, for the offset of the phase
constexpr double kNoPhaseDeg = -30.0;
constexpr int kCorrected = 1;

void removePhaseOffset(Crres& c) {
    const int ngates = c.zhh.ngates, nrays = c.zhh.nrays;
    const float byCorrelation =
        c.radarpro.GetInitialPDP(c.pdp.data, c.rhv.data, ngates, nrays, kOffsetGates);
    clutter::base::report("phase0 = %1.2f\n", static_cast<double>(byCorrelation));
    const float byClass =
        c.radarpro.GetInitialPDP_usingCPI(c.pdp.data, c.ccl.data, ngates, nrays, kOffsetGates);
    clutter::base::report("phase0 = %1.2f\n", static_cast<double>(byClass));
    c.radarpro.CorrectPDPOffset(c.pdp.data, ngates, nrays, byClass);
}

void createDiagnosticFields(Crres& c) {
    copyField(c.pdp, c.dpdp, "Dpdp", "deg");
    copyField(c.pdp, c.acoef, "a", "-");
    copyField(c.pdp, c.bcoef, "b", "-");
    copyField(c.pdp, c.alpha, "alpha", "-");
    copyField(c.pdp, c.ta, "TA", "dB");
    copyField(c.pdp, c.pdpc, "PdpC", "deg");
    copyField(c.pdp, c.ah, "Ah", "dB/km");
    copyField(c.pdp, c.kdp, "KDP", "deg/km");
}

/* Corrects a scan ray by ray, in double precision. */
class RayCorrector {
  public:
    explicit RayCorrector(Crres& context)
        : c_(context),
          n_(context.zhh.ngates),
          dr_(static_cast<double>(context.zhh.gatesize) / 1000.0),
          heights_(gateHeights(context.zhh)) {
        for (std::vector<double>* values :
             {&z_, &phase_, &mask_, &ah_, &rebuilt_, &alpha_, &a_, &b_}) {
            values->resize(heights_.size());
        }
    }

    void correct(std::ptrdiff_t at) {
        const int path = rainGates(c_.fzl.data + at);
        load(at, path);
        double rise = 0.0, pia = 0.0;
        const int result =
            c_.radarpro.Ah_optimal(phase_.data(), z_.data(), path, dr_, mask_.data(), ah_.data(),
                                   z_.data(), rebuilt_.data(), alpha_.data(), a_.data(), b_.data(),
                                   rise, pia, c_.attenuationalg, nullptr, c_.minphaserise);
        storeReflectivity(at, path, result == kCorrected, static_cast<float>(pia));
        storeDiagnostics(at, rise, pia);
    }

  private:
    /* Number of gates before the melting layer; n - 1 where the beam stays below it. */
    int rainGates(const float* freezingLevel) const {
        for (int g = 0; g < n_; ++g) {
            if (heights_[static_cast<std::size_t>(g)] >= meltingLayerBase(freezingLevel[g])) {
                return g;
            }
        }
        return n_ - 1;
    }

    /* Only precipitation gates of the path get their linear reflectivity: others are not used. */
    void load(std::ptrdiff_t at, int path) {
        const float* const dbz = c_.zhh.data + at;
        std::copy_n(c_.pdp.data + at, n_, phase_.begin());
        std::copy_n(c_.ccl.data + at, n_, mask_.begin());
        for (int g = 0; g < path; ++g) {
            const std::size_t gate = static_cast<std::size_t>(g);
            z_[gate] = mask_[gate] == 0.0 ? toLinear(dbz[g]) : 1.0;
        }
        std::fill(rebuilt_.begin(), rebuilt_.end(), kNoPhaseDeg);
        for (std::vector<double>* values : {&ah_, &alpha_, &a_, &b_}) {
            std::fill(values->begin(), values->end(), 0.0);
        }
    }

    /* Gates in and past the melting layer are raised by the attenuation of the whole ray. */
    void storeReflectivity(std::ptrdiff_t at, int path, bool corrected, float pia) {
        float* const dbz = c_.zhh.data + at;
        for (int g = 0; g < path; ++g) {
            const std::size_t gate = static_cast<std::size_t>(g);
            const bool changed = corrected && mask_[gate] == 0.0;
            dbz[g] = changed ? toDecibels(z_[gate]) : thereAndBack(dbz[g]);
        }
        for (int g = path; g < n_; ++g) {
            dbz[g] = thereAndBack(dbz[g]) + pia;
        }
    }

    void storeDiagnostics(std::ptrdiff_t at, double rise, double pia) {
        std::fill_n(c_.dpdp.data + at, n_, static_cast<float>(rise));
        std::fill_n(c_.ta.data + at, n_, static_cast<float>(pia));
        narrow(a_, c_.acoef.data + at);
        narrow(b_, c_.bcoef.data + at);
        narrow(alpha_, c_.alpha.data + at);
        narrow(rebuilt_, c_.pdpc.data + at);
        narrow(ah_, c_.ah.data + at);
    }

    static void narrow(const std::vector<double>& from, float* to) {
        std::transform(from.begin(), from.end(), to,
                       [](double value) { return static_cast<float>(value); });
    }

    Crres& c_;
    int n_;
    double dr_;  // km
    std::vector<double> heights_;
    std::vector<double> z_, phase_, mask_, ah_, rebuilt_, alpha_, a_, b_;
};

}  // namespace

void Crres::AttenuationCorrection() {
    if (!holdAll({&zhh, &pdp, &fzl, &ccl, &rhv}, cells(zhh))) {
        clutter::base::report("Some input variables are missing!\n");
        return;
    }
    removePhaseOffset(*this);
    dsp.Conv2DPPI(pdp.data, pdp.data, ccl.data, zhh.ngates, zhh.nrays, gates2ave_pdp, rays2ave_pdp,
                  0);
    createDiagnosticFields(*this);
    RayCorrector corrector(*this);
    forEachRay(zhh, [&](std::ptrdiff_t at, int) { corrector.correct(at); });
}

void Crres::E1N1AzmRanToE2N2(double east1, double north1, double azimuth, double range,
                             double& east2, double& north2) {
    Cpluvek().E1N1AzmRanToE2N2(east1, north1, azimuth, range, east2, north2);
}

/*
 * The processing context: its settings, and operations on its classes.
 */
#include "clutterclassifier/Crres.h"

#include <cstddef>

#include "base/array.h"
#include "driver/echo_class.h"
#include "model/field_access.h"

using clutter::base::release;
using clutter::model::cells;
using namespace clutter::driver;

Crres::Crres()
    : clutteralg(255),
      rainfallalg(0),
      gates2ave_zhh(7),
      rays2ave_zhh(1),
      gates2ave_zdr(7),
      rays2ave_zdr(1),
      gates2ave_pdp(17),
      rays2ave_pdp(1),
      gates2ave_rhv(0),
      rays2ave_rhv(0),
      gates2ave_vel(0),
      rays2ave_vel(0),
      gates2ave_wid(0),
      rays2ave_wid(0),
      gates2ave_ldr(0),
      rays2ave_ldr(0),
      what2do(0),
      unusedsetting(280),
      mfdir{""},
      invalidvalue(-999.0f),
      vprfile{""},
      freezinglevel(3000.0f),
      texgates(5),
      texrays(3),
      attenuationalg(0),
      attenuationspare(0),
      zdrbias(0.0f),
      minsnr(26.0f),
      minphaserise(20.0) {}

Crres::~Crres() {}

void Crres::ClearMemory() {
    // ah keeps both arrays, snr and ta their angles: the next producer of those records frees them.
    Cpluvek* const withData[] = {&zhh,  &zdr,  &spare1, &snr,   &pdp,   &rhv, &vel,
                                 &wid,  &ldr,  &kdp,    &pdf,   &fzl,   &ccl, &spare2,
                                 &rain, &dpdp, &acoef,  &bcoef, &alpha, &ta,  &pdpc};
    for (Cpluvek* record : withData) {
        release(record->data);
        if (record != &snr && record != &ta) {
            release(record->angles);
        }
    }
}

void Crres::FlagNoEchoConditions() {
    const std::size_t n = cells(zhh);
    if (zhh.data == nullptr || ccl.data == nullptr || cells(ccl) < n) {
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (zhh.data[i] <= 0.0f && ccl.data[i] != kGroundClutterClass) {
            ccl.data[i] = kNoiseClass;
        }
    }
}

void Crres::UnFlagNoEchoConditions() {
    if (ccl.data == nullptr) {
        return;
    }
    const std::size_t n = cells(ccl);
    for (std::size_t i = 0; i < n; ++i) {
        if (ccl.data[i] == kNoiseClass) {
            ccl.data[i] = kPrecipitationClass;
        }
    }
}

void Crres::EliminateInvalidDataForDisplayPurposes() {
    if (ccl.data == nullptr) {
        return;
    }
    const std::size_t n = cells(ccl);
    for (Cpluvek* record : {&zhh, &zdr, &pdp, &rhv, &vel, &wid, &ldr, &rain}) {
        if (record->data == nullptr || cells(*record) < n) {
            continue;
        }
        for (std::size_t i = 0; i < n; ++i) {
            if (!(ccl.data[i] == kPrecipitationClass)) {
                record->data[i] = invalidvalue;
            }
        }
    }
}

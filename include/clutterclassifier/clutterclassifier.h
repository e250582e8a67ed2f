/**
 * @file clutterclassifier.h
 * The one header a host needs.
 *
 * From C it declares the entry point clutterclassifier(); from C++ it also brings in every class of
 * the library and copydata().
 *
 * Classify one scan:
 *
 *     double params[3] = {radar_constant_dB, min_snr_dB, input_mask};
 *     clutterclassifier("/usr/share/clutterclassifier/membership/", nrays, ngates, zhh, zdr, phidp,
 *                       rhohv, velocity, ldr, pdf, ranges, azimuths, &elevation, params, output);
 *
 * The library keeps no global state and starts no threads: calls from several threads at once, each
 * with objects of its own, are independent of each other. Operations that draw random numbers
 * (CDSP's noise, Cpluvek::CreateDataSpaceforPPI, the attenuation algorithms 0, 1, 2 and 8) take
 * them from the C library's rand(), one generator for the whole host, which they seed anew from
 * itself and the clock; after clutter_set_seed() from a generator of the calling thread. No
 * exception of the library's own code leaves it. Messages go to standard output, or to the calling
 * thread's sink (classifier.h).
 */
#ifndef CLUTTERCLASSIFIER_CLUTTERCLASSIFIER_H
#define CLUTTERCLASSIFIER_CLUTTERCLASSIFIER_H

#include "clutterclassifier/export.h"

#ifdef __cplusplus
#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/CGermanRadar.h"
#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cfuzzy.h"
#include "clutterclassifier/Cmfs.h"
#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cradarpro.h"
#include "clutterclassifier/Crres.h"
#include "clutterclassifier/Ctiempo.h"
#include "clutterclassifier/Cufrw.h"
#include "clutterclassifier/Cvars.h"

extern "C" {
#endif

/* clang-format off */
/**
 * Separates precipitation from ground clutter and noise, gate by gate, in one radar scan.
 *
 * Field arrays hold nrays x ngates doubles, ray after ray: gate g of ray r at r * ngates + g. Each
 * of the seven may be null: that field is then left out. Without zhh nothing can be classified
 * and output is left untouched.
 *
 *   mfdir      directory of the membership-function files, with its trailing separator; null counts as
 *              ""; 1,024 characters or more count as a missing directory
 *   nrays      scan size, at least 1; otherwise "nrays and ngates should be positive!" is printed
 *   ngates     and output is left untouched
 *   zhh        horizontal reflectivity, dBZ
 *   zdr        differential reflectivity, dB
 *   phidp      differential phase, degrees
 *   rhohv      co-polar correlation coefficient, 0..1
 *   velocity   Doppler velocity, m/s
 *   ldr        linear depolarisation ratio, dB
 *   pdf        clutter likelihood, 0..1
 *   ranges     range of each gate, metres; elements 0 and 1 are read (of a single gate, too): their
 *              difference, truncated to whole metres, is the gate spacing
 *   azimuths   nrays ray azimuths, stored as given
 *   elevation  one value, stored as given
 *   params     [0] radar constant, dB: SNR = Z - 20 log10(range in km) + constant
 *              [1] lowest signal-to-noise ratio of an echo, dB: gates below it are noise
 *              [2] sum of the inputs to use: 1 texture of zhh, 2 texture of zdr, 4 texture of phidp,
 *                  8 texture of rhohv, 16 velocity, 32 ldr, 64 pdf, 128 rhohv
 *   output     receives nrays x ngates class codes: 0 precipitation (or undecided), 3 noise,
 *              5 ground clutter
 *
 * When a membership file of a used input cannot be read (it must be a regular file; a pipe is not
 * waited for), "Membership function not found: ..." is printed once and output separates only noise
 * (3) from echo (0). When there is not enough memory, output is left untouched and nothing is printed.
 * Hosts that need a status use classifier.h. A NaN value takes the last degree of its table.
 *
 * The caller owns every array; none is kept. Inputs are not modified, but output may be one of the
 * field arrays, which is then replaced.
 */
/* clang-format on */
CLUTTERCLASSIFIER_EXPORT void clutterclassifier(const char* mfdir, int nrays, int ngates,
                                                double* zhh, double* zdr, double* phidp,
                                                double* rhohv, double* velocity, double* ldr,
                                                double* pdf, double* ranges, double* azimuths,
                                                double* elevation, double* params, double* output);

#ifdef __cplusplus
}

/**
 * Imports one field of nrays x ngates doubles (rounded to float) into a record, replacing what the
 * record held. Does nothing when src is null.
 *
 *   ranges, azimuths, elevation, params   as in clutterclassifier()
 *
 * Sets ngates, nrays, gatesize, coordtype 0 (polar), radarconst, minsnr, nrecords 1, nsets 1 and
 * angles (elevation first, then the azimuths, without unit conversion). Counts below 1 are taken as
 * 0.
 */
CLUTTERCLASSIFIER_EXPORT void copydata(double* src, double* ranges, double* azimuths,
                                       double* elevation, Cpluvek* rec, int nrays, int ngates,
                                       double* params);
#endif

#endif

/*
 * layout.cpp - the binary contract: hosts were compiled against these sizes and offsets.
 *
 * The numbers follow from the members' order and types on a 64-bit machine with the common C++ ABI.
 * A failure here means that existing hosts would read the wrong memory.
 */
#include <cstddef>
#include <type_traits>

#include "clutterclassifier/clutterclassifier.h"

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

#if defined(__LP64__)

#define PIN(type, member, offset) \
    static_assert(offsetof(type, member) == (offset), #type "::" #member " moved")
#define PIN_SIZE(type, size) static_assert(sizeof(type) == (size), #type " changed its size")

PIN_SIZE(Cpluvek, 752);
PIN(Cpluvek, valid, 8);
PIN(Cpluvek, year, 12);
PIN(Cpluvek, second, 32);
PIN(Cpluvek, ngates, 36);
PIN(Cpluvek, nrays, 40);
PIN(Cpluvek, coordtype, 44);
PIN(Cpluvek, firstgate, 48);
PIN(Cpluvek, gatesize, 52);
PIN(Cpluvek, beamwidth, 56);
PIN(Cpluvek, axislimits, 60);
PIN(Cpluvek, axislimits0, 84);
PIN(Cpluvek, colormap, 108);
PIN(Cpluvek, displaymin, 112);
PIN(Cpluvek, displaymax, 116);
PIN(Cpluvek, colorflag, 120);
PIN(Cpluvek, datetime, 121);
PIN(Cpluvek, xlabel, 141);
PIN(Cpluvek, ylabel, 241);
PIN(Cpluvek, title, 341);
PIN(Cpluvek, name, 441);
PIN(Cpluvek, units, 541);
PIN(Cpluvek, radarconst, 644);
PIN(Cpluvek, minsnr, 648);
PIN(Cpluvek, radarid, 652);
PIN(Cpluvek, angles, 656);
PIN(Cpluvek, data, 664);
PIN(Cpluvek, recindex, 672);
PIN(Cpluvek, nrecords, 676);
PIN(Cpluvek, nsets, 680);
PIN(Cpluvek, rpm, 684);
PIN(Cpluvek, prf, 688);
PIN(Cpluvek, pulsedepth, 692);
PIN(Cpluvek, nsamples, 696);
PIN(Cpluvek, wavelength, 700);
PIN(Cpluvek, latitude, 704);
PIN(Cpluvek, longitude, 708);
PIN(Cpluvek, altitude, 712);
PIN(Cpluvek, gridxy, 716);
PIN(Cpluvek, nyquist, 724);
PIN(Cpluvek, spare, 728);
PIN(Cpluvek, datatype, 732);
PIN(Cpluvek, scale, 736);
PIN(Cpluvek, offset, 744);

PIN_SIZE(Cmfs, 1064);
PIN(Cmfs, name, 0);
PIN(Cmfs, type, 20);
PIN(Cmfs, params, 1044);

PIN_SIZE(Cvars, 48);
PIN(Cvars, name, 0);
PIN(Cvars, minval, 20);
PIN(Cvars, maxval, 24);
PIN(Cvars, mfs, 32);
PIN(Cvars, nmfs, 40);

PIN_SIZE(Cfuzzy, 64);
PIN(Cfuzzy, weights, 0);
PIN(Cfuzzy, combination, 8);
PIN(Cfuzzy, inputs, 16);
PIN(Cfuzzy, outputs, 24);
PIN(Cfuzzy, ninputs, 32);
PIN(Cfuzzy, noutputs, 36);
PIN(Cfuzzy, nrules, 40);
PIN(Cfuzzy, rules, 48);
PIN(Cfuzzy, data, 56);

PIN_SIZE(CDSP, 1);
PIN_SIZE(Ctiempo, 1);

PIN_SIZE(Cradarpro, 1616);
PIN(Cradarpro, dsp, 0);
PIN(Cradarpro, threshold, 4);
PIN(Cradarpro, coefficients, 8);
PIN(Cradarpro, ahConstraintSum, 1608);

PIN_SIZE(Crres, 20328);
PIN(Crres, clutteralg, 0);
PIN(Crres, rainfallalg, 4);
PIN(Crres, gates2ave_zhh, 8);
PIN(Crres, rays2ave_zhh, 12);
PIN(Crres, gates2ave_zdr, 16);
PIN(Crres, gates2ave_pdp, 24);
PIN(Crres, gates2ave_rhv, 32);
PIN(Crres, gates2ave_vel, 40);
PIN(Crres, gates2ave_wid, 48);
PIN(Crres, gates2ave_ldr, 56);
PIN(Crres, rays2ave_ldr, 60);
PIN(Crres, what2do, 64);
PIN(Crres, unusedsetting, 68);
PIN(Crres, mfdir, 72);
PIN(Crres, invalidvalue, 1096);
PIN(Crres, vprfile, 1100);
PIN(Crres, freezinglevel, 2124);
PIN(Crres, texgates, 2128);
PIN(Crres, texrays, 2132);
PIN(Crres, attenuationalg, 2136);
PIN(Crres, attenuationspare, 2140);
PIN(Crres, zdrbias, 2144);
PIN(Crres, minsnr, 2148);
PIN(Crres, minphaserise, 2152);

/* The records follow each other; a record's number is its position. */
#define PIN_RECORD(member, number) PIN(Crres, member, 2160 + 752 * (number))
PIN_RECORD(zhh, 0);
PIN_RECORD(zdr, 1);
PIN_RECORD(pdp, 2);
PIN_RECORD(rhv, 3);
PIN_RECORD(vel, 4);
PIN_RECORD(wid, 5);
PIN_RECORD(ldr, 6);
PIN_RECORD(kdp, 7);
PIN_RECORD(rain, 8);
PIN_RECORD(spare1, 9);
PIN_RECORD(snr, 10);
PIN_RECORD(dpdp, 11);
PIN_RECORD(acoef, 12);
PIN_RECORD(bcoef, 13);
PIN_RECORD(alpha, 14);
PIN_RECORD(ta, 15);
PIN_RECORD(pdpc, 16);
PIN_RECORD(ah, 17);
PIN_RECORD(pdf, 18);
PIN_RECORD(fzl, 19);
PIN_RECORD(ccl, 20);
PIN_RECORD(spare2, 21);
PIN_RECORD(dsp, 22);
PIN(Crres, radarpro, 2160 + 752 * 22 + 8);

PIN_SIZE(Cufrw, 24);
PIN(Cufrw, rays, 8);
PIN(Cufrw, nrays, 16);

PIN_SIZE(CThuPolDaFor, 24);
PIN(CThuPolDaFor, swapflag, 8);
PIN(CThuPolDaFor, magic, 12);
PIN(CThuPolDaFor, signalthreshold, 20);

PIN_SIZE(CGermanRadar, 374448);
PIN(CGermanRadar, year, 0);
PIN(CGermanRadar, month, 4);
PIN(CGermanRadar, day, 8);
PIN(CGermanRadar, hour, 12);
PIN(CGermanRadar, minute, 16);
PIN(CGermanRadar, second, 20);
PIN(CGermanRadar, reflectivity, 24);
PIN(CGermanRadar, azimuth, 368664);
PIN(CGermanRadar, elevation, 371544);
PIN(CGermanRadar, bins, 374424);
PIN(CGermanRadar, nrays, 374428);
PIN(CGermanRadar, loaded, 374432);
PIN(CGermanRadar, factor, 374440);

#endif

static_assert(std::is_polymorphic<Cpluvek>::value && std::is_polymorphic<Cufrw>::value &&
                  std::is_polymorphic<CThuPolDaFor>::value,
              "destroyed through a table of virtual functions");
static_assert(!std::is_polymorphic<Crres>::value && !std::is_polymorphic<Cfuzzy>::value &&
                  !std::is_polymorphic<CGermanRadar>::value,
              "no table");
static_assert(!std::is_copy_constructible<Cpluvek>::value && !std::is_copy_assignable<Crres>::value,
              "records are copied by name only");

int main() {
    return 0;
}

/*
 * Cradarpro.h - radar algorithms: fuzzy classifiers, unit conversions, isolated pixels.
 */
#ifndef CLUTTERCLASSIFIER_CRADARPRO_H
#define CLUTTERCLASSIFIER_CRADARPRO_H

#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/export.h"

class CLUTTERCLASSIFIER_EXPORT Cradarpro {
  public:
    Cradarpro();
    ~Cradarpro();
    Cradarpro(const Cradarpro&) = delete;
    Cradarpro& operator=(const Cradarpro&) = delete;

    /*
     * Two-class fuzzy logic: ground clutter against precipitation.
     *
     * All arrays hold n elements of the same gates. Any of the nine inputs may be null (not used).
     * dir is the directory text of the membership files, with its trailing separator: an input
     * tagged T uses the files <dir>cal_mf_T_clutter.dat and <dir>cal_mf_T_precipi.dat.
     *
     *   stdZhh, stdZdr, stdPdp, stdRhv   textures (tags sZhh, sZdr, sPdp, sRhv)
     *   velocity   m/s (tag Vel)         ldr   dB (tag LDR)      rhv   0..1 (tag Rhv)
     *   width      m/s (tag Wid)         pdf   clutter likelihood 0..1; the degree of clutter
     * itself out        0 ground clutter, 1 precipitation, -1 undecided weights    null: product of
     * degrees; else nine weights, and combination 1 is the product, any other the weighted sum
     *
     * Returns 1; 0 when out is null, when no input is given (out is then -1.0 everywhere), or after
     * "Membership function not found: ..." (out untouched).
     */
    int PrecipitationClutterClassification(char* dir, float* stdZhh, float* stdZdr, float* stdPdp,
                                           float* stdRhv, float* velocity, float* ldr, float* pdf,
                                           float* rhv, float* width, float* out, int n,
                                           double* weights, int combination);

    /*
     * Four-class fuzzy logic: ground, sea and wind-turbine clutter against precipitation. Arguments
     * and result are those of PrecipitationClutterClassification(); an input tagged T also uses the
     * files <dir>cal_mf_T_seaclut.dat and <dir>cal_mf_T_turclut.dat, and the clutter likelihood is
     * the degree of all three kinds of clutter alike, so that it cannot tell them apart.
     *
     *   out   0 ground clutter, 1 precipitation, 2 sea clutter, 3 turbine clutter (the earliest of
     *         equally strong ones), -1 when all four are equally strong
     *
     * Any input may be null: it then has degree 1 in every class.
     */
    int PrecipitationAllClutterClassification(char* dir, float* stdZhh, float* stdZdr,
                                              float* stdPdp, float* stdRhv, float* velocity,
                                              float* ldr, float* pdf, float* rhv, float* width,
                                              float* out, int n, double* weights, int combination);

    /*
     * The frame of a classifier of rain, snow, melting snow and hail, with placeholders for its
     * membership functions; it gives no classes yet. zh (dBZ), zdr (dB), rhv (0..1), ldr (dB) and
     * the heights h0 and fl (m) hold n elements each; dir is not used. Does nothing when out is
     * null. Without any input out is -1.0 everywhere; with one, "Membership function not found:
     * ..." is printed and out is left untouched.
     */
    void HydrometeorClassification(char* dir, float* zh, float* zdr, float* rhv, float* ldr,
                                   float* h0, float* fl, float* out, int n);

    /* out = 10 log10(in), in double precision. in may be out; null arrays and n < 1 do nothing. */
    void ZmmtoZdb(float* in, float* out, int n);

    /* out = 10^(0.1 in), in double precision. in may be out; null arrays and n < 1 do nothing. */
    void ZdBtoZmm(float* in, float* out, int n);

    /*
     * Flags (1.0, else 0.0) every gate whose class is exactly 0.0 and whose window of wgates x
     * wrays (each from -w/2 to w/2) holds at most maxcount such gates, itself included. Gates
     * beyond the ends count the edge gate again; rays wrap. flags may be cls. Does nothing unless
     * both arrays are given, both sizes positive and both window sizes above 1.
     */
    void GetIsolatedPixels(float* cls, float* flags, int ngates, int nrays, int wgates, int wrays,
                           int maxcount);

    /* Offset of the differential phase (degrees), from the first nwin gates in a row of each ray
     * with a correlation above 0.9; 0 when fewer than a tenth of the rays have such a run. */
    float GetInitialPDP(float* phidp, float* rhohv, int ngates, int nrays, int nwin);

    /* Subtracts offset from every value. */
    void CorrectPDPOffset(float* phidp, int ngates, int nrays, float offset);

    CDSP dsp;
    float threshold;             /* lowest (no-rain) reflectivity, -32 dBZ */
    double coefficients[20][10]; /* rainfall relations, one a row: 0 Z-R, 1 Z-ZDR-R, 2 KDP-ZDR-R, 3
                                    KDP-R, 4 Z-ZDR polynomial */
    double ahConstraintSum; /* by-product of attenuation method 1; not set by the constructor */
};

#endif

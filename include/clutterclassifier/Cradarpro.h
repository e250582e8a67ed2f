/**
 * @file Cradarpro.h
 * Radar algorithms: fuzzy classifiers, unit conversions, isolated pixels, corrections
 * of phase and attenuation, rainfall, beam geometry, vertical profiles.
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

    /* clang-format off */
    /**
     * Two-class fuzzy logic: ground clutter against precipitation.
     *
     * All arrays hold n elements of the same gates. Any of the nine inputs may be null (not used).
     * dir is the directory DIR of the membership files, with its trailing separator: an input
     * tagged T uses the files DIR/cal_mf_T_clutter.dat and DIR/cal_mf_T_precipi.dat.
     *
     *   stdZhh, stdZdr, stdPdp, stdRhv   textures (tags sZhh, sZdr, sPdp, sRhv)
     *   velocity   m/s (tag Vel)         ldr   dB (tag LDR)      rhv   0..1 (tag Rhv)
     *   width      m/s (tag Wid)         pdf   clutter likelihood 0..1: the degree of clutter itself
     *   out        0 ground clutter, 1 precipitation, -1 undecided
     *   weights    null: product of degrees; else nine weights, and combination 1 is the product, any
     *              other the weighted sum
     *
     * Returns 1; 0 when out is null, when no input is given (out is then -1.0 everywhere), or after
     * "Membership function not found: ..." (out untouched).
     */
    /* clang-format on */
    int PrecipitationClutterClassification(char* dir, float* stdZhh, float* stdZdr, float* stdPdp,
                                           float* stdRhv, float* velocity, float* ldr, float* pdf,
                                           float* rhv, float* width, float* out, int n,
                                           double* weights, int combination);

    /**
     * Four-class fuzzy logic: ground, sea and wind-turbine clutter against precipitation. Arguments
     * and result are those of PrecipitationClutterClassification(); an input tagged T also uses the
     * files DIR/cal_mf_T_seaclut.dat and DIR/cal_mf_T_turclut.dat, and the clutter likelihood is
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

    /**
     * The frame of a classifier of rain, snow, melting snow and hail, with placeholder
     * membership functions; returns no classes yet. zh (dBZ), zdr (dB), rhv (0..1), ldr (dB) and
     * the heights h0 and fl (m) hold n elements each; dir is not used. Does nothing when out is
     * null. Without any input out is -1.0 everywhere; with one, "Membership function not found:
     * ..." is printed and out is left untouched.
     */
    void HydrometeorClassification(char* dir, float* zh, float* zdr, float* rhv, float* ldr,
                                   float* h0, float* fl, float* out, int n);

    /** out = 10 log10(in), in double precision. in may be out; null arrays and n < 1 do nothing. */
    void ZmmtoZdb(float* in, float* out, int n);

    /** out = 10^(0.1 in), in double precision. in may be out; null arrays and n < 1 do nothing. */
    void ZdBtoZmm(float* in, float* out, int n);

    /**
     * Flags (1.0, else 0.0) every gate whose class is exactly 0.0 and whose window of wgates x
     * wrays (each from -w/2 to w/2) holds at most maxcount such gates, itself included. Gates
     * past the ends count the edge gate again; rays wrap. flags may be cls. Does nothing unless
     * both arrays are given, both sizes positive and both window sizes above 1.
     */
    void GetIsolatedPixels(float* cls, float* flags, int ngates, int nrays, int wgates, int wrays,
                           int maxcount);

    /** @name Corrections
     * Scans are flat blocks of single precision, gate g of ray r at g + ngates * r; rays are n
     * doubles, gate 0 nearest the radar. Inputs are not modified, outputs belong to the caller and
     * must not overlap the inputs unless an operation says so. A mask or class of exactly 0.0 marks
     * a precipitation gate; any other value, NaN included, does not. Values are not screened. Sizes
     * below 1 and null arrays make an operation do nothing where it says "checked"; elsewhere every
     * array must be given and hold as many values as stated.
     */

    /**
     * Offset of the differential phase (degrees): in each ray, the first nwin gates in a row whose
     * correlation is above 0.9 (NaN counts as above) are averaged; the mean over all rays, a
     * single-precision sum in ray, gate order. A run must start before gate ngates - nwin. Returns
     * 0 when fewer than a tenth of the rays hold a run, when nwin < 1, and (checked) without data.
     */
    float GetInitialPDP(float* phidp, float* rhohv, int ngates, int nrays, int nwin);

    /** The same with runs of nwin precipitation gates (cls exactly 0.0, so not NaN). */
    float GetInitialPDP_usingCPI(float* phidp, float* cls, int ngates, int nrays, int nwin);

    /** Subtracts offset from every value. Checked. */
    void CorrectPDPOffset(float* phidp, int ngates, int nrays, float offset);

    /** Changes the sign of every value. The array must be given. */
    void InvertPDP(float* phidp, int ngates, int nrays);

    /**
     * Unfolds one jump a ray: the first precipitation gate g, at least 20 gates from both ends,
     * where the mean phase of gates g..g+19 differs by more than 250 degrees from that of gates
     * g-20..g. Adds 360 to the precipitation gates from g to the end of the ray. The windows
     * average all gates, precipitation or not; NaN among them hides the jump. Checked.
     */
    void CorrectPDPFolding(float* phidp, float* cls, int ngates, int nrays);

    /**
     * Fills gaps of one ray from their edges: up to nfill gates before a stretch of valid gates
     * with the mean of its first navg gates, and up to nfill gates after it with the mean of its
     * last navg. Means are of the values given, gaps included where a stretch is shorter. Gate 0 is
     * never filled, nor is the gate nfill before a stretch or nfill after it; the stretch's edge
     * must not be gate 0 or n - 1. out may be in. Without gates to average (navg < 1) nothing is
     * filled; n < 1 does nothing.
     */
    void CompletePhidp(double* in, double* out, int n, int nfill, int navg, double* mask);

    /**
     * Fills gaps of one ray by linear interpolation between the valid gates on both sides. The
     * first gate of a gap keeps its input; gates before the first valid one become 0; a trailing
     * gap keeps its input. A valid value of -99999.0 counts as not valid. out may be in.
     * Returns 0.
     */
    int interpPDP(const double* in, const double* mask, int n, double* out);

    /**
     * Coefficient ranges, number of trials and method of an attenuation algorithm; ntrials is the
     * number for the algorithms that search.
     *
     *   0  profile solution, alpha searched           4  the same, nominal coefficients
     *   1  final-value solution, all searched         5  the same, nominal coefficients
     *   2  forward solution, all searched             6  the same, nominal coefficients
     *   3  slope of the phase, nominal alpha          8  profile solution, alpha and b searched
     *
     * alpha, a and b receive the nominal 0.073 dB/deg, 3e-05 and 0.78. For 7 and any other number
     * the method is -1 and ranges and count stay untouched. Returns the method.
     */
    int algs_attcor(int alg, int ntrials, double& alpha, double& a, double& b, double& amin,
                    double& amax, double& bmin, double& bmax, double& alphamin, double& alphamax,
                    int& count, int& method);

    /**
     * Specific attenuation (dB/km, one way) along one ray of n gates, from linear reflectivity z
     * (mm^6/m^3) and per-gate coefficients of Ah = alpha Kdp (dB/deg) and Ah = a z^b. dphi is the
     * rise of the differential phase over the ray (degrees), dr the gate spacing (km). Sums I run
     * over precipitation gates of 0.46 b z^b dr, from a gate to the far end unless stated.
     *
     *   method 0  profile solution (ZPHI; Testud et al. 2000): F = 10^(0.1 b alpha dphi),
     *             ah = z^b (F - 1) / (I(0) + (F - 1) I)
     *   method 1  final-value solution: ah = a z^b / (U^b + a I), U = 10^(-0.1 alpha dphi);
     *             ahConstraintSum becomes a I over the whole ray + U^b of the last such gate
     *   method 2  forward solution (Hitschfeld and Bordan 1954), I from the radar to the gate:
     *             ah = a z^b / (1 - a I); grows without bound as a I reaches 1
     *   method 3  slope of the phase over 7 precipitation gates: alpha (phidp[g+3] - phidp[g-3]) /
     *             (12 dr), not below 0; NaN stays
     *
     * Other methods and gates without precipitation give 0. z, mask and phidp may not overlap ah.
     */
    void Ah(const double* z, const double* mask, const double* phidp, int n, const double* alpha,
            const double* a, const double* b, double dphi, double dr, double* ah, int method);

    /**
     * Corrects the reflectivity of one ray with the coefficients, drawn at random from the ranges
     * of an algorithm (1,000 trials), whose attenuation rebuilds the measured phase best: the least
     * mean |rebuilt - phidp| over precipitation gates, the first trial among equals. NaN as a cost
     * wins only for trial 0.
     *
     *   phidp, z   phase (degrees, offset removed) and linear reflectivity, n gates of dr km
     *   mask       0.0 marks precipitation
     *   ah, phidpRebuilt, alpha, a, b   n values each, written at every gate
     *   zcorr      corrected linear reflectivity at precipitation gates, others untouched; may be z
     *   dphi       the phase rise: mean of the last 20 precipitation gates in a row (past gate 1)
     *              less the mean of the first such run (before gate n - 20); the runs may overlap
     *   pia        two-way attenuation of the whole ray (dB)
     *   select     null, or n values: gates other than 1.0 keep the nominal coefficients, and a
     *              search takes alpha up to 0.3
     *   dphiMin    least phase rise (degrees)
     *
     * Algorithm 6 needs no phase: its dphi is dphiMin + 1 and the rebuilt phase starts at 0.
     * Algorithm 7 and unknown ones give no attenuation. Draws come from rand(), reseeded from
     * rand() and the clock before each of the three fills (a, b, alpha), or from the thread's own
     * generator after clutter_set_seed().
     *
     * Returns 1; -1 for algorithm -1, untouched; 0 without two runs of 20 gates (all outputs
     * untouched) or with a rise not above dphiMin (only dphi written).
     */
    int Ah_optimal(const double* phidp, const double* z, int n, double dr, const double* mask,
                   double* ah, double* zcorr, double* phidpRebuilt, double* alpha, double* a,
                   double* b, double& dphi, double& pia, int alg, const double* select,
                   double dphiMin);

    /**
     * Corrects the differential reflectivity of one ray (dB): gamma, the ratio of the differential
     * to the horizontal attenuation's factor, is stepped by 0.001 from 0.01 until the mean of the
     * last 20 precipitation gates reaches 0.48 log10(mean z) - 0.774 (0 where mean z <= 100) as
     * nearly as it gets; alphaOpt is the coefficient that ah was found with. zdrcorr receives n
     * values, raised by the two-way differential attenuation at precipitation gates; it may be zdr.
     * pida receives the ray's total (dB). At most 5e7 steps.
     * Returns 1; 0, with nothing written, unless dphi > 20, 20 such gates exist and gamma stays
     * positive.
     */
    int Adp_optimal(const double* z, const double* zdr, const double* ah, int n, double dr,
                    double alphaOpt, double dphi, const double* mask, double* zdrcorr,
                    double& gamma, double& pida);

    /**
     * Finds stretches of heavy precipitation: consecutive precipitation gates of at least 45 dBZ
     * and a correlation of at least 0.7, longer than 2 km, over which the phase rises by more than
     * 20 degrees. flag (n values) becomes 1.0 on their gates, else 0.0. spots (40 values) holds
     * their number, then first gate, last gate and phase rise of each of the first ten; unused
     * values are 0. Returns the number.
     */
    int findHotSpot(const double* phidp, const double* z, const double* rhohv, const double* mask,
                    double dr, int n, double* flag, double* spots);

    /**
     * Averages of six fields over gates g0..g1 (both included) of all rays of a vertical scan:
     * out[k] is the single-precision sum divided by (g1 - g0 + 1) * nrays. Of f1 only values above
     * 0 are summed, though the divisor counts all gates; the others are summed unscreened. Null
     * fields and gates outside the ray add nothing. Unless 0 is not both bounds, g0 < g1 and both
     * sizes are positive, only out[0] is written: -99.0. A null out does nothing.
     */
    void CalibrationAt90deg(float* f1, float* f2, float* f3, float* f4, float* f5, float* f6,
                            int ngates, int nrays, int g0, int g1, float* out);

    /** Reserved; does nothing. */
    void CalibrationZhZdrKdp(double* zh, double* zdr, double* kdp, int n);

    /**
     * Rain rate (mm/h) of n gates from reflectivity zh (dBZ), zdr (dB) and kdp (deg/km) by row alg
     * of coefficients (c0, c1, ...), with Z = 10^(0.1 zh):
     *
     *   0  (Z / c0)^(1 / c1)                       needs zh     (Marshall and Palmer 1948)
     *   1  c0 Z^c1 10^(c2 zdr)                     needs zh, zdr
     *   2  c0 kdp^c1 10^(c2 zdr)                   needs kdp, zdr
     *   3  c0 kdp^c1                               needs kdp
     *   4  10^(0.1 (zh - (c0 + c1 zdr + c2 zdr^2 + c3 zdr^3)))   needs zh, zdr
     *
     * Any other alg writes 0; a relation without its inputs writes nothing. coeffs, when given with
     * 0 <= alg < 20 and 0 <= ncoeffs < 10, first replaces the row's leading coefficients for good.
     * Nothing is screened: NaN stays, a negative kdp gives NaN. rain may be an input; a null rain
     * does nothing.
     */
    void RainfallEstimation(float* zh, float* zdr, float* kdp, int n, int alg, float* coeffs,
                            int ncoeffs, float* rain);

    /** rain (output, mm/h) = (10^(0.1 zh) / a)^(1 / b) where zh (dBZ) is above threshold, else 0
     * (NaN too). Arrays may be the same. Checked. */
    void ZtoR(float* rain, float* zh, int n, float a, float b);

    /** zh (output, dBZ) = 10 log10(a rain^b) where rain (mm/h) is above 0, else threshold (NaN
     * too). Arrays may be the same. Checked. */
    void RtoZ(float* rain, float* zh, int n, float a, float b);

    /**
     * Geometry of a straight beam over an Earth of radius 6.378e6 m (no refraction): heights above
     * the antenna and slant ranges in metres, angles in radians, n values each. Output may be
     * input.
     *
     *   h_beam   h = (r^2 + R^2 + 2 r R sin(elevation))^0.5 - R
     *   r_beam   the larger root r of the same relation; NaN where the beam never reaches the
     * height gama     the elevation of a height seen at a range; NaN where it is out of sight
     *
     * Sine, arc sine and power are those of the C library. Where it runs on a processor without
     * fused multiply-add, h_beam and gama may differ from other machines in the last bit.
     */
    void h_beam(double* range, double elevation, double* height, int n);
    void r_beam(double* height, double elevation, double* range, int n);
    void gama(double* height, double range, double* angle, int n);

    /**
     * Power pattern of a beam (two-way, (sin x / x)^4; beamwidth, elevation in radians, range in
     * metres), over 1,000 angles from -5 degrees (radians, step 0.01 degrees) and over heights at
     * that range (metres, step 7.5, symmetric about 0, as wide as half a beam is high on both
     * sides). Both powers sum to 1. The four arrays are replaced (delete[] of the old, null at
     * first; new[] for the new): the caller frees them. A beam at or past the vertical, or one
     * too wide for 100,000 heights, has no heights: nheights is 0.
     */
    void BeamPowerProfile(double beamwidth, double range, double elevation, double** power,
                          double** angles, int& nangles, double** powerH, double** heights,
                          int& nheights);

    /**
     * Reads a library of vertical profiles: text, 1,800 levels of 60 values (dB) each, into *vpr
     * (replaced as above) as linear values, profile j level i at i + 1800 j; 7.5 m between levels
     * (dh), freezing level at reflevel 600. Missing values are 0 dB, tokens count as the number at
     * their start or 0. The last argument is not used. Returns 1; 0 when the file cannot be read,
     * all outputs untouched.
     */
    int GetVPR(double** vpr, int& nprofiles, int& nlevels, int& reflevel, double& dh,
               char* filename, int unused);

    /**
     * Replaces linear reflectivity near the melting layer by the value at the ground of the profile
     * (of the file, see GetVPR) that, seen through the beam, comes closest to it. Applies to gates
     * with zin above 1 and a beam height less than 1,000 m from the gate's freezing level fl (m)
     * whose best profile is less than 1 dB away, the first among equals; other gates, and those
     * whose window of levels exceeds the profile, keep zin. zout may be zin. Gates of one range in
     * a row share the beam pattern. The last argument is not used. Returns 1; 0 without a readable
     * file, zout untouched.
     */
    int VPRCorrection(double* zout, double* zin, double* range, double* fl, int n, double elevation,
                      double beamwidth, char* filename, int unused);

    CDSP dsp;
    float threshold;             /**< lowest (no-rain) reflectivity, -32 dBZ */
    double coefficients[20][10]; /**< rainfall relations, one a row: 0 Z-R, 1 Z-ZDR-R, 2 KDP-ZDR-R,
                                    3 KDP-R, 4 Z-ZDR polynomial */
    double ahConstraintSum; /**< by-product of attenuation method 1; not set by the constructor */
};

#endif

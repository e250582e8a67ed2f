/**
 * @file Crres.h
 * The processing context: one scan's field records, the settings, and the stages.
 */
#ifndef CLUTTERCLASSIFIER_CRRES_H
#define CLUTTERCLASSIFIER_CRRES_H

#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cradarpro.h"
#include "clutterclassifier/export.h"

/**
 * Fill the records (copydata(), Cpluvek::CopyPointerToObject() or by hand), then run stages: each
 * works in place on the records. A record whose data is null is absent, and so is one with fewer
 * values than the reflectivity record; a larger one is read with the reflectivity's sizes. Stages
 * return silently when they lack an input. One thread at a time uses a context; it is large (20 KB)
 * but may live on the stack.
 */
class CLUTTERCLASSIFIER_EXPORT Crres {
  public:
    Crres();
    ~Crres();
    Crres(const Crres&) = delete;
    Crres& operator=(const Crres&) = delete;

    /** Frees the records' arrays for the next scan (ah keeps both, snr and ta their angles: their
     * next producer frees them). Settings stay. */
    void ClearMemory();

    /** Sets class 3 (noise) where reflectivity is <= 0 dBZ and the class is not ground clutter (5).
     */
    void FlagNoEchoConditions();

    /** Sets every class 3 (noise) back to 0. */
    void UnFlagNoEchoConditions();

    /** Writes invalidvalue into zhh, zdr, pdp, rhv, vel, wid, ldr and rain where the class is not
     * 0.
     */
    void EliminateInvalidDataForDisplayPurposes();

    /**
     * The classification stage: fills snr and ccl from zhh (0 precipitation or undecided, 3 noise,
     * 5 ground clutter), with the inputs of mask that have data: 1 texture of zhh, 2 of zdr, 4 of
     * pdp, 8 of rhv, 16 vel, 32 ldr, 64 pdf, 128 rhv, 256 wid. Textures use the window texgates x
     * texrays over gates that are not noise. When the classifier fails, the classes separate only
     * noise from echo.
     */
    void PrecipitationClutterClassification(short mask);

    /** Turns isolated precipitation gates of ccl into ground clutter: first those alone in a 5 x 5
     * window, then those with at most one other in a 10 x 10 one. */
    void RemoveIsolatedPixels();

    /** Fills snr: Z - 20 log10(range in km) + zhh.radarconst, dB, with gate 0 one spacing out. */
    void computeSNR();

    /** Sets class 3 where minsnr exceeds the signal-to-noise ratio, else 0 (a NaN ratio gives 0).
     * Returns 1, or 0 when zhh or snr has no data. */
    int classifyNoisewithSNR();

    /**
     * Reads a text file of range and angle pairs separated by white space into two new arrays of n
     * floats, which the caller frees (delete[]). Outputs are untouched when the file cannot be
     * opened or holds no pair.
     */
    void ReadRangeAngleLocations(char* file, float** ranges, float** angles, int& n);

    /**
     * Reads settings from a text file of key and value pairs, separated by white space: WHAT2DO,
     * CLUTTER_MFS, CLUTTER_ALG, GATES2AVE_x and RAYS2AVE_x for x of ZHH, ZDR, PDP and RHV,
     * RAINFALL_ALG, ATTENUATION_ALG, FREEZING_LEVEL (m), ZDR_BIAS (dB), and the rainfall
     * coefficients a_Z-R, b_Z-R, a_ZZDR-R, b_ZZDR-R, c_ZZDR-R, a_KDP-R and b_KDP-R, which go to
     * radarpro.coefficients rounded to single precision. Case matters, later pairs win, and there
     * are no comments. A value is the number it starts with, 0 without one; a whole number
     * beyond the setting's range wraps. Words are cut at 1,023 characters; a last key without a
     * value is ignored. An unknown key is reported ("The command '...' was not found!"). Returns 0,
     * also when the file cannot be read, which leaves everything as it was.
     */
    int readinitialconfiguration(char* file);

    /**
     * Runs the stages that what selects, each after printing a line with its settings, in this
     * order:
     *
     *     1  PrecipitationClutterClassification(clutteralg), RemoveIsolatedPixels()
     *     2  CalibrateZdrOffsetandAzimuthVariation()
     *     4  smoothing of zhh, zdr (as means of linear values), pdp, rhv, vel, wid, ldr in place,
     *        over precipitation gates (CDSP::Conv2DPPI), each with its window of gates and rays
     *     8  AttenuationCorrection()
     *    16  PrecipitationEstimation(rainfallalg)
     *    32  zhh from rain, Z = 200 R^1.6        64  rain from zhh by the same relation
     *   128  EliminateInvalidDataForDisplayPurposes()
     *
     * The last three print nothing. Returns 1; 0, having done nothing, when zhh has no data.
     */
    int RadarDataProcessing(int what);

    /**
     * Samples fields at npoints ranges (m) and azimuths (degrees) as Cpluvek::ExtractDataRA does
     * and appends each field's samples as one line, headed by the date and time of tag (seconds
     * since 1970), to the file PREFIX_..., named after the field:
     *
     *   1 _ccl.dat       16 _pdp.dat     256 _Dpdp.dat       4096 _TA.dat
     *   2 _zhh.dat       32 _Vel.dat     512 _a.dat          8192 _pdpC.dat
     *   4 _zdr.dat       64 _Wid.dat    1024 _b.dat         16384 _Ah.dat
     *   8 _rhv.dat      128 _KDP.dat    2048 _alpha.dat     32768 _R.dat
     *
     * Classes have one decimal, a, b and alpha six significant digits, all others two decimals. A
     * field without data is skipped; without points or a prefix nothing is written.
     */
    void Vars2Save(int what, char* prefix, float* ranges, float* azimuths, int npoints,
                   unsigned int tag);

    /**
     * The attenuation stage: corrects zhh in place. Needs zhh, pdp, fzl, ccl and rhv, else prints
     * "Some input variables are missing!" and returns.
     *
     * Takes the offset off pdp (the first runs of 10 precipitation gates; both estimates are
     * printed as "phase0 = ...") and smooths it (gates2ave_pdp x rays2ave_pdp). Then, ray by ray,
     * Cradarpro::Ah_optimal corrects the gates nearer than the first whose beam is at least as high
     * as its freezing level less 500 m (all but the last gate when there is none) with algorithm
     * attenuationalg and the least phase rise minphaserise. Gates from there on are raised by the
     * ray's total two-way attenuation; gates before it that are not precipitation keep their
     * value, except for the conversion to linear values and back. The beam starts at range 0 and
     * has the elevation zhh.angles[0] (0 without angles) in every ray.
     *
     * Fills, in copies of pdp: dpdp, acoef, bcoef, alpha, ta, pdpc and ah (-30 degrees and 0 where
     * a ray was not corrected); kdp is created and named, but holds the phase of pdp.
     */
    void AttenuationCorrection();

    /** The point at a range and an azimuth (radians, clockwise from north) from another; lengths in
     * one unit. */
    void E1N1AzmRanToE2N2(double east1, double north1, double azimuth, double range, double& east2,
                          double& north2);

    /**
     * Statistics of a vertical scan of light rain, where the differential reflectivity is 0 dB:
     * over the gates between the ranges r0 and r1 (m, the second excluded) with a correlation of at
     * least rhoMin and a reflectivity of at least zMin (dBZ). stats receives 7 values:
     *
     *   [0] elevation (degrees)   [1] zhh (dB of the mean linear value)   [2] zdr (the same)
     *   [3] pdp   [4] rhv   [5] vel   [6] wid (means, single-precision sums)
     *
     * All are -99 without the six fields; only the elevation is known when it is not within 88..92
     * ("Please select a 90-degree scan (...)!" is printed), when the range is not 0 <= r0 < r1 in
     * whole gates before the last, or with 100 gates or fewer. The two linear sums start at 1. A
     * null stats does nothing.
     */
    void CalculateOffsetsAt90Deg(float* stats, float r0, float r1, float rhoMin, float zMin);

    /** The same for any elevation, over precipitation gates (ccl, which is needed too) with a
     * reflectivity of zMin to zMax. */
    void CalculateOffsetsAtLowElevations(float* stats, float r0, float r1, float rhoMin, float zMin,
                                         float zMax);

    /**
     * Appends, one file a ray, the differential reflectivity of precipitation gates below a height
     * (m above the antenna) with a reflectivity of zMin to zMax (dBZ) and a correlation of at least
     * 0.95 to PREFIX_YYYYMM_AZ_RRR.dat (year and month of zhh, number of the ray), as
     * CDSP::SaveArrayOnFile does. The number of gates below the height is the same for
     * every ray and not limited to the ray: past its end come the next ray's gates, up to the end
     * of the scan. Rays without such a gate get no file. Needs zhh, zdr, ccl and rhv.
     */
    void ExtractZdrDataToCalculateAzimuthVariation(char* prefix, float height, float zMin,
                                                   float zMax);

    /** Adds zdrbias to every value of zdr. */
    void CalibrateZdrOffsetandAzimuthVariation();

    /**
     * The rainfall stage: fills rain (mm/h, which must have data already) from zhh, zdr and fzl.
     * alg >= 0: that relation of Cradarpro::RainfallEstimation, without specific differential
     * phase. alg < 0: relation 1 (Z and ZDR) where zhh > 15 dBZ, 0.3 < zdr < 5 dB and the beam is
     * not above the freezing level less 500 m, else relation 0 (Z). Gates of all classes are
     * filled.
     */
    void PrecipitationEstimation(int alg);

    /**
     * Corrects zhh in and near the melting layer by Cradarpro::VPRCorrection, with the profiles of
     * vprfile, the freezing levels of fzl and the elevation and beam width of zhh (radians). Gates
     * that are not corrected, and all without a readable file, keep their value except for the
     * conversion to linear values and back.
     */
    void VPRCorrection();

    short clutteralg;  /**< inputs of the classification stage, 255 */
    int rainfallalg;   /**< rainfall relation, 0 */
    int gates2ave_zhh; /**< smoothing windows, gates x rays */
    int rays2ave_zhh;
    int gates2ave_zdr;
    int rays2ave_zdr;
    int gates2ave_pdp;
    int rays2ave_pdp;
    int gates2ave_rhv;
    int rays2ave_rhv;
    int gates2ave_vel;
    int rays2ave_vel;
    int gates2ave_wid;
    int rays2ave_wid;
    int gates2ave_ldr;
    int rays2ave_ldr;
    int what2do;         /**< stages of the pipeline, one bit each */
    int unusedsetting;   /**< not read, 280 */
    char mfdir[1024];    /**< directory of the membership files, with its trailing separator */
    float invalidvalue;  /**< written where data are hidden for display, -999 */
    char vprfile[1024];  /**< file of vertical profiles */
    float freezinglevel; /**< m, 3000 */
    int texgates;        /**< texture window, gates x rays: 5 x 3 */
    int texrays;
    int attenuationalg;   /**< attenuation algorithm, 0 */
    int attenuationspare; /**< not read, 0 */
    float zdrbias;        /**< differential-reflectivity offset, dB, 0 */
    float minsnr;         /**< signal-to-noise threshold, dB, 26 */
    double minphaserise;  /**< least phase rise of an attenuation correction, degrees, 20 */

    Cpluvek zhh;    /**< 0  horizontal reflectivity, dBZ */
    Cpluvek zdr;    /**< 1  differential reflectivity, dB */
    Cpluvek pdp;    /**< 2  differential phase, degrees */
    Cpluvek rhv;    /**< 3  co-polar correlation */
    Cpluvek vel;    /**< 4  Doppler velocity, m/s */
    Cpluvek wid;    /**< 5  spectrum width, m/s */
    Cpluvek ldr;    /**< 6  linear depolarisation ratio, dB */
    Cpluvek kdp;    /**< 7  specific differential phase, degrees/km */
    Cpluvek rain;   /**< 8  rain rate, mm/h */
    Cpluvek spare1; /**< 9  unused */
    Cpluvek snr;    /**< 10 signal-to-noise ratio, dB */
    Cpluvek dpdp;   /**< 11 total phase rise per ray, degrees */
    Cpluvek acoef;  /**< 12 attenuation coefficient a */
    Cpluvek bcoef;  /**< 13 attenuation exponent b */
    Cpluvek alpha;  /**< 14 attenuation coefficient alpha */
    Cpluvek ta;     /**< 15 total path attenuation, dB */
    Cpluvek pdpc;   /**< 16 rebuilt differential phase, degrees */
    Cpluvek ah;     /**< 17 specific attenuation, dB/km */
    Cpluvek pdf;    /**< 18 clutter likelihood, 0..1 */
    Cpluvek fzl;    /**< 19 freezing-level height per gate, m */
    Cpluvek ccl;    /**< 20 classes: 0 precipitation, 3 noise, 5 ground clutter */
    Cpluvek spare2; /**< 21 unused */
    CDSP dsp;
    Cradarpro radarpro;
};

#endif

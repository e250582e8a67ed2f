/*
 * Crres.h - the processing context: one scan's field records, the settings, and the stages.
 */
#ifndef CLUTTERCLASSIFIER_CRRES_H
#define CLUTTERCLASSIFIER_CRRES_H

#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cradarpro.h"
#include "clutterclassifier/export.h"

/*
 * Fill the records (copydata(), Cpluvek::CopyPointerToObject() or by hand), then run stages: each
 * works in place on the records. A record whose data is null is absent, and so is one with fewer
 * values than the reflectivity record; a larger one is read with the reflectivity's sizes. Stages
 * return silently when they lack an input. One thread at a time uses a context; it is large (16 KB)
 * but may live on the stack.
 */
class CLUTTERCLASSIFIER_EXPORT Crres {
  public:
    Crres();
    ~Crres();
    Crres(const Crres&) = delete;
    Crres& operator=(const Crres&) = delete;

    /* Frees the records' arrays for the next scan (ah keeps both, snr and ta their angles: their
     * next producer frees them). Settings stay. */
    void ClearMemory();

    /* Sets class 3 (noise) where reflectivity is <= 0 dBZ and the class is not ground clutter (5).
     */
    void FlagNoEchoConditions();

    /* Sets every class 3 (noise) back to 0. */
    void UnFlagNoEchoConditions();

    /* Writes invalidvalue into zhh, zdr, pdp, rhv, vel, wid, ldr and rain where the class is not 0.
     */
    void EliminateInvalidDataForDisplayPurposes();

    /*
     * The classification stage: fills snr and ccl from zhh (0 precipitation or undecided, 3 noise,
     * 5 ground clutter), with the inputs of mask that have data: 1 texture of zhh, 2 of zdr, 4 of
     * pdp, 8 of rhv, 16 vel, 32 ldr, 64 pdf, 128 rhv, 256 wid. Textures use the window texgates x
     * texrays over gates that are not noise. When the classifier fails the classes tell only noise
     * from echo.
     */
    void PrecipitationClutterClassification(short mask);

    /* Turns isolated precipitation gates of ccl into ground clutter: first those alone in a 5 x 5
     * window, then those with at most one other in a 10 x 10 one. */
    void RemoveIsolatedPixels();

    /* Fills snr: Z - 20 log10(range in km) + zhh.radarconst, dB, gate 0 taken one spacing out. */
    void computeSNR();

    /* Sets class 3 where minsnr exceeds the signal-to-noise ratio, else 0 (a NaN ratio gives 0).
     * Returns 1, or 0 when zhh or snr has no data. */
    int classifyNoisewithSNR();

    /*
     * Reads a text file of range and angle pairs separated by white space into two new arrays of n
     * floats, which the caller frees (delete[]). Outputs are untouched when the file cannot be
     * opened or holds no pair.
     */
    void ReadRangeAngleLocations(char* file, float** ranges, float** angles, int& n);

    short clutteralg;  /* inputs of the classification stage, 255 */
    int rainfallalg;   /* rainfall relation, 0 */
    int gates2ave_zhh; /* smoothing windows, gates x rays */
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
    int what2do;         /* stages of the pipeline, one bit each */
    int unusedsetting;   /* not read, 280 */
    char mfdir[1024];    /* directory of the membership files, with its trailing separator */
    float invalidvalue;  /* written where data are hidden for display, -999 */
    char vprfile[1024];  /* file of vertical profiles */
    float freezinglevel; /* m, 3000 */
    int texgates;        /* texture window, gates x rays: 5 x 3 */
    int texrays;
    int attenuationalg;   /* attenuation algorithm, 0 */
    int attenuationspare; /* not read, 0 */
    float zdrbias;        /* differential-reflectivity offset, dB, 0 */
    float minsnr;         /* signal-to-noise threshold, dB, 26 */
    double minphaserise;  /* least phase rise of an attenuation correction, degrees, 20 */

    Cpluvek zhh;    /* 0  horizontal reflectivity, dBZ */
    Cpluvek zdr;    /* 1  differential reflectivity, dB */
    Cpluvek pdp;    /* 2  differential phase, degrees */
    Cpluvek rhv;    /* 3  co-polar correlation */
    Cpluvek vel;    /* 4  Doppler velocity, m/s */
    Cpluvek wid;    /* 5  spectrum width, m/s */
    Cpluvek ldr;    /* 6  linear depolarisation ratio, dB */
    Cpluvek kdp;    /* 7  specific differential phase, degrees/km */
    Cpluvek rain;   /* 8  rain rate, mm/h */
    Cpluvek spare1; /* 9  unused */
    Cpluvek snr;    /* 10 signal-to-noise ratio, dB */
    Cpluvek dpdp;   /* 11 total phase rise per ray, degrees */
    Cpluvek acoef;  /* 12 attenuation coefficient a */
    Cpluvek bcoef;  /* 13 attenuation exponent b */
    Cpluvek alpha;  /* 14 attenuation coefficient alpha */
    Cpluvek ta;     /* 15 total path attenuation, dB */
    Cpluvek pdpc;   /* 16 rebuilt differential phase, degrees */
    Cpluvek ah;     /* 17 specific attenuation, dB/km */
    Cpluvek pdf;    /* 18 clutter likelihood, 0..1 */
    Cpluvek fzl;    /* 19 freezing-level height per gate, m */
    Cpluvek ccl;    /* 20 classes: 0 precipitation, 3 noise, 5 ground clutter */
    Cpluvek spare2; /* 21 unused */
    CDSP dsp;
    Cradarpro radarpro;
};

#endif

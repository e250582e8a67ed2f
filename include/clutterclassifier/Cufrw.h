/**
 * @file Cufrw.h
 * Universal Format radar files: the rays of a file in memory, and their conversion to and
 * from field records. The format is the published exchange format for radar data: length-framed
 * records of 16-bit big-endian words, one record for each ray (docs/formats/universal-format.md).
 */
#ifndef CLUTTERCLASSIFIER_CUFRW_H
#define CLUTTERCLASSIFIER_CUFRW_H

#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/export.h"

/** One entry of a ray's field table. */
struct CufTableEntry {
    char name[3];            /**< two letters and a terminator */
    unsigned short position; /**< of the field header: 1-based word of the record */
};

/** A field header. Words are in host order; "x 64" and the like are the format's own scalings. */
struct CufFieldHeader {
    unsigned short dataposition; /**< 1  1-based word of the record */
    short scalefactor;           /**< 2  value = word / scalefactor */
    short firstgaterange;        /**< 3  range to first gate, km */
    short firstgateadjustment;   /**< 4  from there to the centre of the first gate, m */
    short gatespacing;           /**< 5  m */
    unsigned short ngates;       /**< 6 */
    short gatedepth;             /**< 7  m */
    short horizontalbeamwidth;   /**< 8  degrees x 64 */
    short verticalbeamwidth;     /**< 9  degrees x 64 */
    short receiverbandwidth;     /**< 10 MHz x 64 */
    short polarisation;          /**< 11 0 horizontal, 1 vertical, 2 circular, 3 elliptical */
    short wavelength;            /**< 12 cm x 64 */
    short samples;               /**< 13 per estimate */
    char thresholdfield[3];      /**< 14 */
    short thresholdvalue;        /**< 15 */
    short thresholdscale;        /**< 16 */
    char editcode[3];            /**< 17 */
    short repetitiontime;        /**< 18 pulse repetition time, microseconds */
    short bitspergate;           /**< 19 */
};

/** One ray: a Universal Format record word for word, in host order; texts carry a terminator. */
struct Cufray {
    char format[3];                  /**< mandatory header: word 1, "UF" */
    unsigned short recordlength;     /**< 2  words */
    unsigned short optionalposition; /**< 3  1-based words of the record */
    unsigned short localposition;    /**< 4 */
    unsigned short dataposition;     /**< 5 */
    short recordnumber;              /**< 6 */
    short volumenumber;              /**< 7 */
    short raynumber;                 /**< 8 */
    short recordinray;               /**< 9 */
    short sweepnumber;               /**< 10 */
    char radarname[9];               /**< 11-14 */
    char sitename[9];                /**< 15-18 */
    short latitudedegrees;           /**< 19 */
    short latitudeminutes;           /**< 20 */
    short latitudeseconds;           /**< 21 x 64 */
    short longitudedegrees;          /**< 22 */
    short longitudeminutes;          /**< 23 */
    short longitudeseconds;          /**< 24 x 64 */
    short altitude;                  /**< 25 m above sea level */
    short year;                      /**< 26 */
    short month;                     /**< 27 */
    short day;                       /**< 28 */
    short hour;                      /**< 29 */
    short minute;                    /**< 30 */
    short second;                    /**< 31 */
    char timezone[3];                /**< 32 */
    short azimuth;                   /**< 33 degrees x 64 */
    short elevation;                 /**< 34 degrees x 64 */
    short sweepmode;                 /**< 35 */
    short fixedangle;                /**< 36 degrees x 64 */
    short sweeprate;                 /**< 37 degrees/s x 64 */
    short generationyear;            /**< 38 */
    short generationmonth;           /**< 39 */
    short generationday;             /**< 40 */
    char generationfacility[9];      /**< 41-44 */
    short missingvalue;              /**< 45 */
    char projectname[9];             /**< optional header: words 1-4 */
    short baselineazimuth;           /**< 5 */
    short baselineelevation;         /**< 6 */
    short starthour;                 /**< 7  of the volume scan */
    short startminute;               /**< 8 */
    short startsecond;               /**< 9 */
    char tapename[9];                /**< 10-13 */
    short flag;                      /**< 14 */
    short nfields;                   /**< data header: fields in this ray */
    short nrecords;                  /**< records in this ray */
    short nrecordfields;             /**< fields in this record */
    CufTableEntry table[20];
    CufFieldHeader headers[20];
    short nyquist;       /**< word 20 of a "VR" field: Nyquist velocity x scale */
    short radarconstant; /**< words 20-25 of a "DM" field */
    short noisepower;
    short receivergain;
    short peakpower;
    short antennagain;
    short pulseduration;
    unsigned short ngates; /**< of the ray's first field; every field is held with this count */
    short* data;           /**< owned by the Cufrw: field f at f * ngates to (f + 1) * ngates - 1 */
};

/**
 * A whole file in memory. At most 20 fields a ray; field-specific words are kept once for each ray
 * (the last "VR" or "DM" field wins).
 */
class CLUTTERCLASSIFIER_EXPORT Cufrw {
  public:
    Cufrw();
    virtual ~Cufrw();
    Cufrw(const Cufrw&) = delete;
    Cufrw& operator=(const Cufrw&) = delete;

    /** Releases all rays; nrays becomes 0. */
    void deletearrays();

    /**
     * Replaces the rays by those of a file. Reading ends at the first record that is too short or
     * exceeds the file. Words past the end of a record read as its missing-data value (data) or 0
     * (headers). Years below 20 read as 20xx.
     *
     * Returns 1 (also, without rays, for a file too short for the length of a record), or 0: the
     * file cannot be opened or does not start with a whole "UF" record, a ray has more gates than
     * its record can hold, or - after a message - more than 20 fields.
     */
    int readfile(char* path);

    /**
     * Writes the rays; record lengths and the positions of the headers are set anew. A field with a
     * position of 0 is skipped. Returns 0 when there are no rays or the file cannot be created,
     * otherwise the result of closing the file (0 on success).
     */
    int write2file(char* path);

    /**
     * Replaces the rays by those of an array of field records: one ray per ray of record 0, one
     * field per record, words = 100 x value truncated and wrapped to 16 bits (0 for NaN and
     * infinities), ready for write2file(). Names are translated to two letters, others become
     * "UN".
     *
     * Returns 1; 0 when fields is null (the rays stay), and 0 with no rays when there are more than
     * 20 or a ray does not fit a record.
     */
    int pluvek2uf(Cpluvek* fields);

    /**
     * Fills field records, at least as many as ray 0 has fields, one per field: value = word /
     * scale. Gates that hold the missing-data value, and gates that a shorter ray does not have,
     * are -32 dBZ in reflectivity fields and NaN in all others. A field of scale 0
     * has no values. Does nothing without rays, with fields null, or when the records would hold
     * more than 2^18 values, those of all fields together, and more than 128 for each gate of all
     * rays: one long ray among many short ones. Latitude and longitude take
     * the seconds as whole seconds, as pluvek2uf() writes them.
     */
    void uf2pluvek(Cpluvek* fields);

    /** Exchanges the bytes of 16-bit words, or of one value, in place. */
    void endian_swap(short* words, int n);
    void endian_swap(unsigned short& word);
    void endian_swap(short& word);
    void endian_swap(unsigned int& value);
    void endian_swap(int& value);

    Cufray* rays; /**< owned */
    int nrays;
};

/** Splits an angle into truncated degrees, minutes and seconds, all of the angle's sign. Values
 * past 16 bits wrap; NaN and infinities give 0. */
CLUTTERCLASSIFIER_EXPORT void deg2degminsec(float angle, short& deg, short& min, short& sec);

#endif

/**
 * @file Cpluvek.h
 * The radar field record: one quantity of one scan, or one Cartesian grid.
 */
#ifndef CLUTTERCLASSIFIER_CPLUVEK_H
#define CLUTTERCLASSIFIER_CPLUVEK_H

#include "clutterclassifier/export.h"

/**
 * Values, ray angles, scan geometry, site and radar parameters, date and time, display settings,
 * and the scaling used when the values are stored in a file.
 *
 * Quantities that belong together travel as one array allocated with new Cpluvek[n]: the nrecords
 * of the first element is the number of elements, each element's recindex its own position, and all
 * elements share the first one's grid. Operations marked "whole array" are called on the first
 * element.
 *
 * A record owns angles and data: both are allocated with new float[], freed by the destructor and
 * by every operation that refills the record. data null means that the record holds nothing.
 * Records are not copied by construction or assignment: use copy() or CopyPointerToObject().
 *
 * The order and types of the members are a contract: hosts were compiled against them.
 */
class CLUTTERCLASSIFIER_EXPORT Cpluvek {
  public:
    Cpluvek();
    virtual ~Cpluvek();
    Cpluvek(const Cpluvek&) = delete;
    Cpluvek& operator=(const Cpluvek&) = delete;

    /** Writes datetime as day/month/year hours:minutes:seconds ("01/01/1900 00:00:00"). May be
     * called on a null object. */
    void GetDateTime();

    /**
     * Whole array. Copies the record at position index (0 when index is negative or not
     * below nrecords) into dst: everything but datatype, scale, offset and spare, with both
     * axis-limit sets of dst taken from the source's axislimits, dst.nsets = the source's nrecords,
     * dst.recindex = the position, and dst.nrecords raised to at least 1. dst may be the source
     * itself.
     *
     * Returns 1, or -1 when this is null or the record at max(index, 0) holds no data.
     */
    int CopyPointerToObject(int index, Cpluvek& dst);

    /**
     * Whole array. Destroys the array at *dst, if any, and makes *dst a new array that is a deep
     * copy of this one: the caller owns it (delete[]). The first element's sizes serve for every
     * element; absent arrays stay absent. *dst may be this array. Does nothing when this or dst is
     * null.
     */
    void copy(Cpluvek** dst);

    /**
     * Whole array. Stores all records in one field record file (docs/formats/field-record.md).
     * Returns 1, or 0 when this is null or the file cannot be created or written.
     */
    int WriteDataToFile(const char* file);

    /**
     * Whole array. Loads a field record file into this array, which must already have at least as
     * many elements as the file has blocks.
     *
     * Returns 1, or 0: silently when the file cannot be opened, is not a field record file, ends
     * early or declares more than it holds; with "Error in Cpluvek!" when a block's counts
     * contradict its header. Records read before the fault stay filled, the others are left as they
     * were.
     */
    int ReadDataFromFile(const char* file);

    /**
     * The grid turned by a quarter: gate g of ray r becomes gate nrays - 1 - r of ray g, and ngates
     * and nrays change places. Axis limits and the values of angles stay; angles gets room for the
     * new rays, whose azimuths are 0. Does nothing when this or data is null.
     */
    void Rot90();

    /** Reverses the order of the rays. angles do not change. */
    void HorzMirror();
    /** Reverses the order of the gates within each ray. angles do not change. */
    void VertMirror();

    /**
     * Samples a Cartesian record (coordtype 2) at n points: xy holds n x values, then n y values,
     * m; out receives n values. x runs along the rays, y along the gates: the value is that of ray
     * (x - axislimits0[0]) / gatesize and gate (y - axislimits0[3]) / gatesize, both in single
     * precision and truncated toward zero, or -9999 outside the grid (for NaN, too).
     *
     * Returns 1; 0 with a message when this is null, the record is not Cartesian or holds no data,
     * silently when an array is null.
     */
    int ExtractDataXY(float* xy, float* out, int n);

    /**
     * Samples a polar record (coordtype 0 or 1) at n ranges (m, from the first gate) and azimuths
     * (degrees). The ray is the one with the nearest number in angles (the first of equals; not
     * around the circle), the gate range / gatesize in single precision, truncated toward zero, at
     * most the last. A negative gate is counted back into the rays before, at most to the first
     * value of the block, which NaN as a range gives, too.
     *
     * Returns 1; 0 when the record is not polar or has no data or angles, or an array is null.
     */
    int ExtractDataRA(float* ranges, float* azimuths, float* out, int n);

    /**
     * Moves points off gates that hold exactly the value invalid: a point (ray and gate as in
     * ExtractDataRA, but a gate past the last is counted on) whose value is invalid becomes the
     * first other value in a window of wgates x wrays around it, ray by ray from -(wrays / 2) to
     * wrays / 2, gate by gate from -(wgates / 2) to wgates / 2. Rays wrap, gates stop at the ends.
     * New points are at gate * gatesize and the ray's azimuth in degrees. All other points, those
     * outside the block and those without a find are copied. The outputs may be the inputs.
     *
     * Returns 1; 0 as ExtractDataRA does.
     */
    int FindValidDataRA(float* ranges, float* azimuths, float invalid, int n, float* outranges,
                        float* outazimuths, int wgates, int wrays);

    /** Puts the rays of a polar record (coordtype 0) in ascending order of their azimuth. Rays of
     * one azimuth may change places (CDSP::Sort). Returns 1; 0 for another record and without data
     * or angles. */
    int SortPolarDataRays();

    /**
     * Makes the record a synthetic scan: uniform noise from -10 to 60 on nrays equally spaced rays
     * of ngates gates of 250 m, at elevation 0, dated 2014-01-01 00:00:00. axislimits0, texts and
     * site stay. Does nothing unless both counts are positive and their product is an int. Seeds
     * and uses the C library's rand().
     */
    void CreateDataSpaceforPPI(int nrays, int ngates);

    /** The map coordinates (m) of a point at an azimuth (rad, clockwise from north) and range (m)
     * from east1, north1. Needs nothing of the record. */
    void E1N1AzmRanToE2N2(double east1, double north1, double azimuth, double range, double& east2,
                          double& north2);

    /**
     * Writes a polar record (coordtype 0) as a comma-separated table (docs/formats/csv.md). A null
     * file means YYYYMMDDhhmmss_NAME.csv of the record's date and name, in the working
     * directory. Prints "Saving results to ...".
     *
     * Returns 1; 0 after "Invalid data file " (another record, no data, no angles) or "Could not
     * create output file ...", and silently when the file cannot be written to its end.
     */
    int SavePolarData2Ascii(const char* file);

    int valid; /**< 1 once the record holds data read from a file or made by the library */
    int year;  /**< date and time of the scan */
    int month;
    int day;
    int hour;
    int minute;
    int second;
    int ngates;      /**< gates per ray; columns of a grid */
    int nrays;       /**< rays; rows of a grid */
    int coordtype;   /**< 0 polar, 1 polar, unsorted, 2 grid; not set by the constructor */
    int firstgate;   /**< range of the first gate in gate spacings; not set by the constructor */
    float gatesize;  /**< gate spacing or pixel size, m; not set by the constructor */
    float beamwidth; /**< antenna beam width, rad */
    float axislimits[6]; /**< display: x min, x max, x tick, y min, y max, y tick */
    /** The limits as loaded; the origin (x min, y min) of a Cartesian record. */
    float axislimits0[6];
    int colormap;     /**< display colour-map number */
    float displaymin; /**< lower end of the display scale */
    float displaymax; /**< upper end of the display scale */
    unsigned char
        colorflag;     /**< display byte, 255 from every producer; not set by the constructor */
    char datetime[20]; /**< date and time as text, see GetDateTime() */
    char xlabel[100];
    char ylabel[100];
    char title[100];
    char name[100];  /**< short name of the quantity: "SNR", "CCl", "DZ" */
    char units[100]; /**< "dB", "-" */
    /** Calibration constant, dB: SNR = value - 20 log10(range in km) + radarconst. */
    float radarconst;
    float minsnr;  /**< signal-to-noise threshold, dB */
    short radarid; /**< identifier carried from file to file */
    float* angles; /**< owned, nrays + 1 values, rad: the elevation, then the azimuth of each ray */
    float* data;   /**< owned, nrays x ngates values: gate g of ray r at r * ngates + g */
    int recindex;  /**< position in the array; not set by the constructor */
    int nrecords;  /**< number of records in the array (first element) */
    int nsets;     /**< number of records of the array this record was taken from */
    float rpm;     /**< antenna rotation rate, revolutions per minute */
    float prf;     /**< pulse repetition frequency, Hz */
    float pulsedepth; /**< range depth of one sample volume, m */
    float nsamples;   /**< pulses averaged per ray */
    float wavelength; /**< radar wavelength, m */
    float latitude;   /**< site, degrees north */
    float longitude;  /**< site, degrees east */
    float altitude;   /**< site, m */
    float gridxy[2];  /**< site easting and northing in the national grid, m; -1 unknown */
    float nyquist;    /**< Nyquist velocity, m/s */
    float spare;      /**< carried to the polar data format writer */
    int datatype;     /**< storage in the field record file: 0 float32, 2 uint8, 3 uint16 */
    double scale;     /**< storage gain: value = raw * scale + offset */
    double offset;    /**< storage offset */
};

#endif

/*
 * Cpluvek.h - the radar field record: one quantity of one scan, or one Cartesian grid.
 */
#ifndef CLUTTERCLASSIFIER_CPLUVEK_H
#define CLUTTERCLASSIFIER_CPLUVEK_H

#include "clutterclassifier/export.h"

/*
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
 * Every number below is native: the record is also the layout that hosts were compiled against.
 */
class CLUTTERCLASSIFIER_EXPORT Cpluvek {
  public:
    Cpluvek();
    virtual ~Cpluvek();
    Cpluvek(const Cpluvek&) = delete;
    Cpluvek& operator=(const Cpluvek&) = delete;

    /* Writes datetime as day/month/year hours:minutes:seconds ("01/01/1900 00:00:00"). Survives a
     * call on a null object. */
    void GetDateTime();

    /*
     * Whole array. Copies the record at position index (0 when index is negative or beyond
     * nrecords) into dst: everything but datatype, scale, offset and spare, with both axis-limit
     * sets of dst taken from the source's axislimits, dst.nsets = the source's nrecords,
     * dst.recindex = the position, and dst.nrecords raised to at least 1. dst may be the source
     * itself.
     *
     * Returns 1, or -1 when this is null or the record at max(index, 0) holds no data.
     */
    int CopyPointerToObject(int index, Cpluvek& dst);

    /*
     * Whole array. Destroys the array at *dst, if any, and makes *dst a new array that is a deep
     * copy of this one: the caller owns it (delete[]). The first element's sizes serve for every
     * element; absent arrays stay absent. *dst may be this array. Does nothing when this or dst is
     * null.
     */
    void copy(Cpluvek** dst);

    /*
     * Whole array. Stores all records in one field record file (docs/formats/field-record.md).
     * Returns 1, or 0 when this is null or the file cannot be created or written.
     */
    int WriteDataToFile(const char* file);

    /*
     * Whole array. Loads a field record file into this array, which must already have at least as
     * many elements as the file has blocks.
     *
     * Returns 1, or 0: silently when the file cannot be opened, is no field record file, ends early
     * or declares more than it holds; with "Error in Cpluvek!" when a block's counts contradict its
     * header. Records read before the fault stay filled, the others are left as they were.
     */
    int ReadDataFromFile(const char* file);

    int valid; /* 1 once the record holds data read from a file or made by the library */
    int year;  /* date and time of the scan */
    int month;
    int day;
    int hour;
    int minute;
    int second;
    int ngates;          /* gates per ray; columns of a grid */
    int nrays;           /* rays; rows of a grid */
    int coordtype;       /* 0 polar, 2 Cartesian grid; not set by the constructor */
    int firstgate;       /* range of the first gate in gate spacings; not set by the constructor */
    float gatesize;      /* gate spacing or pixel size, m; not set by the constructor */
    float beamwidth;     /* antenna beam width, rad */
    float axislimits[6]; /* display: x min, x max, x tick, y min, y max, y tick */
    float
        axislimits0[6]; /* the limits as loaded; the origin (x min, y min) of a Cartesian record */
    int colormap;       /* display colour-map number */
    float displaymin;   /* lower end of the display scale */
    float displaymax;   /* upper end of the display scale */
    unsigned char colorflag; /* display byte, 255 from every producer; not set by the constructor */
    char datetime[20];       /* date and time as text, see GetDateTime() */
    char xlabel[100];
    char ylabel[100];
    char title[100];
    char name[100];  /* short name of the quantity: "SNR", "CCl", "DZ" */
    char units[100]; /* "dB", "-" */
    float
        radarconst; /* calibration constant, dB: SNR = value - 20 log10(range in km) + radarconst */
    float minsnr;   /* signal-to-noise threshold, dB */
    short radarid;  /* identifier carried from file to file */
    float* angles;  /* owned, nrays + 1 values, rad: the elevation, then the azimuth of each ray */
    float* data;    /* owned, nrays x ngates values: gate g of ray r at r * ngates + g */
    int recindex;   /* position in the array; not set by the constructor */
    int nrecords;   /* number of records in the array (first element) */
    int nsets;      /* number of records of the array this record was taken from */
    float rpm;      /* antenna rotation rate, revolutions per minute */
    float prf;      /* pulse repetition frequency, Hz */
    float pulsedepth; /* range depth of one sample volume, m */
    float nsamples;   /* pulses averaged per ray */
    float wavelength; /* radar wavelength, m */
    float latitude;   /* site, degrees north */
    float longitude;  /* site, degrees east */
    float altitude;   /* site, m */
    float gridxy[2];  /* site easting and northing in the national grid, m; -1 unknown */
    float nyquist;    /* Nyquist velocity, m/s */
    float spare;      /* carried to the polar data format writer */
    int datatype;     /* storage in the field record file: 0 float32, 2 uint8, 3 uint16 */
    double scale;     /* storage gain: value = raw * scale + offset */
    double offset;    /* storage offset */
};

#endif

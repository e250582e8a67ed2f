/**
 * @file CThuPolDaFor.h
 * The polar data format: one header of 320 bytes, one record of packed gates for each ray
 * (docs/formats/polar-data.md). Reads a scan into field records, writes single-parameter products,
 * shortens the rays of files.
 */
#ifndef CLUTTERCLASSIFIER_CTHUPOLDAFOR_H
#define CLUTTERCLASSIFIER_CTHUPOLDAFOR_H

#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/export.h"

/**
 * All words of a file are in the byte order of the machine, whatever its magic. The product code of
 * a file determines its quantities and the packing of a gate. Codes 2211 and 2212 also need the
 * layout, 252, 260 or 280, which is not in the file: the caller passes it.
 */
class CLUTTERCLASSIFIER_EXPORT CThuPolDaFor {
  public:
    /** SetMagicNumber(0) and a threshold of 26 dB. */
    CThuPolDaFor();
    virtual ~CThuPolDaFor();
    CThuPolDaFor(const CThuPolDaFor&) = delete;
    CThuPolDaFor& operator=(const CThuPolDaFor&) = delete;

    /** Chooses the first eight bytes of files to be written: "RADF" 80 03 C0 01 for a flag other
     * than 0, "ARFD" 03 80 01 C0 for 0. The words that follow are not affected. */
    void SetMagicNumber(int flag);

    /**
     * Reads a scan into fields, which must have as many records as the product has fields (8 is
     * always enough): values in physical units, azimuths and elevation (rad), header, names, units
     * and display ranges. The records' earlier arrays are freed.
     *
     *   layout           252, 260 or 280; with any other, no gate of products 2211 and 2212 is
     * read: their values stay 0 skipcorrection   0: for products 2211 and 2213 the offset of the
     * differential phase is estimated and removed, and gates whose Z - 20 log10(range in km) +
     *
     *                    calibration constant is below signalthreshold become -999 in fields 0
     *                    to 5; any other value: neither is done
     *
     * Returns 1; 0 when the file cannot be opened; -1 when it is not a polar data file, when there
     * are no rays or no gates (after a message), or when it declares more than 2^18 values, those
     * of all fields together, and more than 64 for each of its bytes; -2 when the product is
     * unknown. After any result other than 1 the records have not changed. In a file that ends
     * early every missing gate repeats the last one (the ray before, where a product stores whole
     * rays).
     */
    int ReadPolarData(char* path, Cpluvek* fields, int layout, int skipcorrection);

    /**
     * Gives all fields[0].nrecords records the header of the first one (everything but the heights
     * in gridxy), a beam width of one degree, a copy of its angles, and date text, title, name,
     * units and display range by its product code (radarid). Does nothing when fields is null.
     */
    void FillingFields(Cpluvek* fields);

    /**
     * Reads elevation (degrees), time (seconds since 1970) and site from a file name; separator is
     * the character between directories. Values that are not in the name are -1, 0 and -1.
     *
     *   name contains                                    time from           site   elevation
     *   sidpol, augldr, wetbulbfreezinglev               YYYYMMDDhhmm at 0   0, 1,  digit after
     *                                                                        -1     the last b
     *   tavo-rain-radar_chenies                          the same at 24      2      0 when there
     *                                                                               is an "el"
     *
     * or -99 where the letter or the "el" is missing. A name shorter than its digits, or an
     * impossible month, gives time 0.
     */
    void GetCharacteristics(char* filename, int& elevation, unsigned int& time, int& site,
                            int separator);

    /** Orders the rays of every record by azimuth, if the first one is polar. Records without data
     * or angles are skipped. */
    void SortPolarDataRays(Cpluvek* fields);

    /**
     * Writes a copy of a file whose rays end where the beam reaches a height of 10 km (rounded up
     * to 5 km of range). Gates are copied byte by byte. Returns 1; 0 without a file when the input
     * cannot be read, its elevation with half a degree added is not above 1.5 degrees, its first
     * gate is not at range 0, nothing would become shorter, or its fields are not five or seven (of
     * the layouts 252, 260, 280); 0 when the output cannot be written.
     */
    int PackAgainDataFiles(char* inpath, char* outpath, int layout);

    /**
     * Writes one single-parameter product: values in the storage of the product code
     * values->radarid, then one byte for each gate from layer (0 where it has no value). Numbers
     * are truncated and wrap at the width of their word; NaN and infinities give 0. Returns 1; 0
     * when values is null, the product is not a single-parameter one, or the file cannot be
     * written.
     */
    int WriteSingleParameterData(const char* path, const Cpluvek* values, const Cpluvek* layer);

    /** Splits an angle into truncated degrees, minutes and seconds, all of the angle's sign. */
    void LatLonToDegMinSec(float angle, short& deg, short& min, short& sec);

    int swapflag;          /**< what SetMagicNumber() was last given */
    char magic[8];         /**< four letters and four bytes, not terminated */
    float signalthreshold; /**< dB */
};

#endif

/**
 * @file CGermanRadar.h
 * The German radar product "DX": a text header and 360 run-length coded rays of
 * reflectivity in steps of half a decibel (docs/formats/german-dx.md).
 */
#ifndef CLUTTERCLASSIFIER_CGERMANRADAR_H
#define CLUTTERCLASSIFIER_CGERMANRADAR_H

#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/export.h"

/** One scan of 360 rays of 1 km bins in memory. */
class CLUTTERCLASSIFIER_EXPORT CGermanRadar {
  public:
    /** Nothing loaded: 128 bins a ray, reflectivity, elevations, date and time 0, azimuth r for ray
     * r. */
    CGermanRadar();
    ~CGermanRadar();
    CGermanRadar(const CGermanRadar&) = delete;
    CGermanRadar& operator=(const CGermanRadar&) = delete;

    /**
     * Reads a file. The number of bins, 100 or 128, is counted in the first ray. For any
     * other count, reading ends after the angles of this ray, the other rays do not change, and the
     * file counts as read.
     *
     * Returns 1; 0 when the file cannot be opened, its header is not that of the product, or -
     * after the message "Error when searching for new ray" - a ray is missing or cut. Nothing is
     * loaded then; rays before the fault have been replaced.
     */
    int readbinaryfile(char* path);

    /**
     * Fills two records: 0 reflectivity (dBZ), 1 the elevation of the ray at every gate (degrees).
     * Angles are in radians. The records' earlier arrays are freed. Does nothing before a file was
     * read, or when fields is null.
     */
    void german2pluvek(Cpluvek* fields);

    int year; /**< date and time of the scan; the second is not in DX files */
    int month;
    int day;
    int hour;
    int minute;
    int second;
    double reflectivity[360 * 128]; /**< dBZ, -32.5 no echo; bin b of ray r at r * 128 + b */
    double azimuth[360];            /**< degrees */
    double elevation[360];          /**< degrees */
    int bins;                       /**< in each ray, at most 128 */
    int nrays;                      /**< 360 */
    int loaded;                     /**< 1 once a file was read */
    double factor;                  /**< 1.0, not used */
};

#endif

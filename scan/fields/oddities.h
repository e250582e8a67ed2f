/* oddities.h - unusual properties of a scan, in sentences. */
#ifndef SCAN_FIELDS_ODDITIES_H
#define SCAN_FIELDS_ODDITIES_H

#include <string>

#include "scan/scan.h"

namespace scan {

/* The largest gap between neighbouring azimuths, degrees; 360 for fewer than two rays. */
double largestAzimuthGapDeg(const Sweep& sweep);

/* Whether the rays close a circle, so that the last one is a neighbour of the first. */
bool closesCircle(const Sweep& sweep);

/* Whether the coordinates of the radar are those of a place on the Earth. */
bool liesOnEarth(const Scan& scan);

/* Appends what the scan alone shows: coverage, order, ray lengths, values. */
void addOddities(Scan& scan);

}  // namespace scan

#endif

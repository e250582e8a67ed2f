/* gate.h - the gate of a sweep at an angle and a range. */
#ifndef CLI_COMMANDS_EXPLAIN_GATE_H
#define CLI_COMMANDS_EXPLAIN_GATE_H

#include "scan/scan.h"

namespace cli {

struct Gate {
    int ray = 0, number = 0;  // both from 0
    double azimuthDeg = 0, elevationDeg = 0, rangeKm = 0;
};

/* The gate whose centre is nearest, on the nearest ray. The angle is an azimuth, or an elevation in
 * a range-height sweep. Throws std::runtime_error for a point farther from every ray than the rays
 * are apart (but at least one degree), or outside the gates of the ray. */
Gate gateAt(const scan::Sweep& sweep, double angleDeg, double rangeKm);

}  // namespace cli

#endif

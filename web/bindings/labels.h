/* labels.h - gates that the user has labelled, and what is learned from them. */
#ifndef WEB_BINDINGS_LABELS_H
#define WEB_BINDINGS_LABELS_H

#include <cstdint>
#include <string>
#include <vector>

#include "scan/membership/label_rule.h"
#include "scan/scan.h"

namespace studio {

/* Gives the label to all gates within a radius of a point, km. */
void paintDisc(const scan::Sweep& sweep, double xKm, double yKm, double radiusKm, scan::Label label,
               std::vector<scan::Label>& labels);

/* Labels as class codes to be shown: precipitation, ground clutter, or no value. */
std::vector<float> codesOf(const std::vector<scan::Label>& labels);

}  // namespace studio

#endif

/* labelled_scan.h - a sweep as training takes it: inputs, labels, and which gates are echoes. */
#ifndef SCAN_MEMBERSHIP_LABELLED_SCAN_H
#define SCAN_MEMBERSHIP_LABELLED_SCAN_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "scan/classes/plan.h"
#include "scan/membership/label_rule.h"
#include "scan/scan.h"

namespace scan {

struct LabelledScan {
    std::string name;
    int rays = 0, gates = 0;
    bool sector = false;
    std::vector<std::uint8_t> echo;  // 1 where the gate is classified
    std::vector<Label> labels;       // kNotJudged where it is not
    /* Values of the library's inputs by index, textures as the library computes them; empty:
     * absent.
     */
    std::vector<std::vector<float>> inputs;
    std::vector<std::string> notes;

    std::size_t cells() const { return echo.size(); }
};

/* The inputs that options name (or all that the sweep has), with labels by a rule. Weather within
 * two gates or one ray of clutter is set apart. Throws ScanError and std::runtime_error. */
LabelledScan labelledScan(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
                          const LabelRule& rule);

/* From labels that are there already, one for each gate. */
LabelledScan labelledScan(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
                          std::vector<Label> labels);

/* Means over the echoes of a window around every gate; 0 without any. Rays wrap in a closed circle.
 */
std::vector<float> windowMeans(const LabelledScan& scan, const std::vector<float>& values,
                               Window window);

}  // namespace scan

#endif

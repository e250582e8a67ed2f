/* trained_input.h - one input after training: what it contributes to a margin, and its tables. */
#ifndef SCAN_MEMBERSHIP_TRAINED_INPUT_H
#define SCAN_MEMBERSHIP_TRAINED_INPUT_H

#include <string>
#include <vector>

#include "clutterclassifier/classifier.h"
#include "scan/membership/fit_weights.h"
#include "scan/membership/labelled_scan.h"
#include "scan/membership/ratio_curve.h"
#include "scan/membership/table_file.h"

namespace scan {

/* One of the library's inputs by its index. */
const clutter_input_info& inputInfo(int input);

/* One input's functions: the degree of precipitation is 1 / (1 + exp(-(weight * ratio + lean))),
 * that of clutter the rest. */
struct TrainedInput {
    int input;  // index of the library's input
    RatioCurve curve;
    InputWeight weight;

    /* The points of a table; both degrees are 0.5 beyond the physical range. */
    std::vector<TablePoint> table(TableClass tableClass) const;
};

/* The margins of all gates of a scan: of textures the mean over the neighbourhood. */
std::vector<float> marginsOf(const std::vector<TrainedInput>& trained, const LabelledScan& scan,
                             Window neighbourhood);

/* Writes the tables of inputs into a directory; the names of the files. Throws
 * std::runtime_error. */
std::vector<std::string> writeTables(const std::vector<TrainedInput>& trained,
                                     const std::string& directory);

}  // namespace scan

#endif
